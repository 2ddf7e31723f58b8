#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "platform/headless/headless_serial_queue.h"
#include "platform/headless/headless_wall_clock.h"

namespace skavlo {
namespace {

constexpr std::uint32_t kQuarterSecond = 250'000;

class HeadlessQueue : public testing::Test {
  protected:
    using Events = std::vector<std::pair<double, std::string>>;
    void note(const std::string& what) {
        events.emplace_back(clock.timeIntervalSince1970() - start, what);
    }

    HeadlessRunLoop loop;
    HeadlessWallClock clock{loop};
    double start = clock.timeIntervalSince1970();
    std::unique_ptr<HeadlessSerialQueue> queue = std::make_unique<HeadlessSerialQueue>(loop);
    Events events;
};

TEST_F(HeadlessQueue, RunsBlocksInOrderAndNotAtOnce) {
    queue->async([this] { note("a"); });
    queue->async([this] { note("b"); });
    EXPECT_TRUE(events.empty());
    loop.runPosted();
    EXPECT_EQ(events, (Events{{0, "a"}, {0, "b"}}));
}

TEST_F(HeadlessQueue, ASleepingBlockHoldsUpTheOthersAndNotTheLoop) {
    queue->async([this] {
        queue->usleep(kQuarterSecond);
        note("slept");
    });
    queue->async([this] { note("second"); });
    loop.async([this] { note("main"); });
    const auto timer = loop.scheduledTimer(0.125, false, [this] {
        note("timer");
        queue->async([this] { note("third"); });
    });
    loop.runPosted();
    EXPECT_EQ(
        events,
        (Events{
            {0, "main"}, {0.125, "timer"}, {0.25, "slept"}, {0.25, "second"}, {0.25, "third"}}));
}

TEST_F(HeadlessQueue, RunsTheRestAtItsEnd) {
    queue->async([this, &sleeper = *queue] {
        sleeper.usleep(kQuarterSecond);
        note("slept");
    });
    queue->async([this] { note("second"); });
    queue.reset();
    EXPECT_EQ(events, (Events{{0.25, "slept"}, {0.25, "second"}}));
    loop.runPosted();
    EXPECT_EQ(events.size(), 2U);
}

}  // namespace
}  // namespace skavlo
