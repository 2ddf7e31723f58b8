#include "platform/linux/capture/grab_rate.h"

#include <gtest/gtest.h>

namespace skavlo {
namespace {

constexpr PixelSize kScreen{1000, 1000};
constexpr std::uint32_t kClient = 0x400000;

class Grabs : public testing::Test {
  protected:
    bool grab(std::uint32_t time, std::uint32_t client = kClient) {
        return rate.grabbed(client, time);
    }
    GrabRate rate;
};

TEST_F(Grabs, AScreenshotIsNoRecording) {
    EXPECT_FALSE(grab(0));
    EXPECT_FALSE(grab(10'000));
    EXPECT_FALSE(grab(20'000));
}

TEST_F(Grabs, TheThirdWithinASecondIs) {
    EXPECT_FALSE(grab(0));
    EXPECT_FALSE(grab(500));
    EXPECT_TRUE(grab(1000));
}

TEST_F(Grabs, TheThirdAfterMoreThanASecondIsNot) {
    EXPECT_FALSE(grab(0));
    EXPECT_FALSE(grab(500));
    EXPECT_FALSE(grab(1001));
    EXPECT_TRUE(grab(1400));
}

TEST_F(Grabs, ThreeASecondGoOnCounting) {
    for (std::uint32_t i = 0; i < 30; ++i) EXPECT_EQ(grab(i * 333), i >= 2) << i;
}

TEST_F(Grabs, AreLargeFromATenthOfTheScreenOn) {
    EXPECT_FALSE(GrabRate::isLarge({999, 100}, kScreen));
    EXPECT_TRUE(GrabRate::isLarge({1000, 100}, kScreen));
    EXPECT_TRUE(GrabRate::isLarge(kScreen, kScreen));
}

TEST_F(Grabs, ThoseOfSeveralClientsAreNotAddedUp) {
    for (std::uint32_t client = 0; client < 10; ++client) EXPECT_FALSE(grab(client, client << 21U));
}

TEST_F(Grabs, TheServersTimeMayWrapAround) {
    EXPECT_FALSE(grab(0xffffff00));
    EXPECT_FALSE(grab(0xffffffff));
    EXPECT_TRUE(grab(0x10));
}

}  // namespace
}  // namespace skavlo
