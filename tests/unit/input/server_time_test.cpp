#include "platform/linux/input/server_time.h"

#include <gtest/gtest.h>

namespace skavlo {
namespace {

constexpr MachTime kMillisecond = 1'000'000;

TEST(ServerTime, IsTheEndOfItsMillisecond) {
    EXPECT_EQ(serverTimeToMachTime(5000, 5007 * kMillisecond + 123), 5001 * kMillisecond - 1);
}

TEST(ServerTime, IsNeverLaterThanNow) {
    const MachTime now = 5000 * kMillisecond + 123;
    EXPECT_EQ(serverTimeToMachTime(5000, now), now);
    EXPECT_EQ(serverTimeToMachTime(5001, now), now) << "a clock read a moment later";
}

TEST(ServerTime, SurvivesTheWrapOf32Bits) {
    constexpr MachTime kWrap = MachTime{1} << 32;
    const MachTime now = (3 * kWrap + 2) * kMillisecond;
    EXPECT_EQ(serverTimeToMachTime(0xffffffff, now), 3 * kWrap * kMillisecond - 1);
    EXPECT_EQ(serverTimeToMachTime(1, now), (3 * kWrap + 2) * kMillisecond - 1);
}

TEST(ServerTime, OlderThanTheClockIsNow) {
    EXPECT_EQ(serverTimeToMachTime(0xfffffff0, 5 * kMillisecond), 5 * kMillisecond);
}

}  // namespace
}  // namespace skavlo
