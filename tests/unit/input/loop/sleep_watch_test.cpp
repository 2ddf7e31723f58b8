#include "platform/linux/input/sleep_watch.h"

#include <gtest/gtest.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include <cstdint>

#include "tests/unit/input/support/event_log.h"

namespace skavlo::test {
namespace {

using std::chrono::nanoseconds;
using std::chrono::seconds;

class SleepWatchTest : public ::testing::Test {
  protected:
    void jump() {
        const std::uint64_t one = 1;
        ASSERT_EQ(write(jumps, &one, sizeof one), static_cast<ssize_t>(sizeof one));
        context.restart();
        context.poll();
    }

    asio::io_context context{1};
    int jumps = eventfd(0, EFD_NONBLOCK);
    nanoseconds slept = seconds(100);
    int woke = 0;
    SleepWatch watch{context, jumps, [this] { return slept; }, [this] { ++woke; }};
};

TEST_F(SleepWatchTest, ClockThatWasSetIsNoSleep) {
    jump();
    slept += nanoseconds(5000);
    jump();
    EXPECT_EQ(woke, 0);
}

TEST_F(SleepWatchTest, EverySleepIsToldOnce) {
    slept += seconds(1);
    jump();
    EXPECT_EQ(woke, 1);
    jump();
    EXPECT_EQ(woke, 1);
    slept += seconds(3600);
    jump();
    EXPECT_EQ(woke, 2);
}

TEST(SleepWatch, KernelTellsClockJumps) {
    const int jumps = SleepWatch::openClockJumps();
    ASSERT_GE(jumps, 0);
    asio::io_context context;
    SleepWatch watch(context, jumps, &SleepWatch::sleptSoFar, [] { FAIL(); });
    EXPECT_GE(SleepWatch::sleptSoFar(), nanoseconds(-1'000'000));
    EXPECT_EQ(context.poll(), 0u) << "no wake-up without a jump";
}

TEST(SleepWatch, WithoutADescriptorNeverCalls) {
    asio::io_context context;
    SleepWatch watch(context, -1, &SleepWatch::sleptSoFar, [] { FAIL(); });
    EXPECT_EQ(context.poll(), 0u);
}

}  // namespace
}  // namespace skavlo::test
