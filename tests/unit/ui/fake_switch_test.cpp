#include "ui/skv_fake_switch.h"

#include <gtest/gtest.h>

#include <vector>

namespace skavlo {
namespace {

TEST(FakeSwitch, AFreshOneIsOffAndTakesTaps) {
    const SKVFakeSwitch fresh;
    EXPECT_FALSE(fresh.isOn());
    EXPECT_FALSE(fresh.isLoading());
    EXPECT_TRUE(fresh.userInteractionEnabled());
    EXPECT_EQ(fresh.tag, 0);
}

TEST(FakeSwitch, SetOnChangesAtOnceAndSendsNoEvent) {
    SKVFakeSwitch itsSwitch;
    int events = 0;
    std::vector<bool> changes;
    itsSwitch.addTarget([&](SKVFakeSwitch&) { ++events; });
    itsSwitch.didChange = [&](bool animated) { changes.push_back(animated); };
    itsSwitch.setOn(true);
    EXPECT_TRUE(itsSwitch.isOn());
    itsSwitch.setOn(false, true);
    EXPECT_FALSE(itsSwitch.isOn());
    EXPECT_EQ(changes, (std::vector{false, true}));
    EXPECT_EQ(events, 0);
}

TEST(FakeSwitch, ATapGlidesAndSendsOneEventWithTheNewValue) {
    SKVFakeSwitch itsSwitch(15);
    std::vector<bool> seen;
    std::vector<bool> changes;
    itsSwitch.addTarget([&](SKVFakeSwitch& sender) {
        EXPECT_EQ(sender.tag, 15);
        seen.push_back(sender.isOn());
    });
    itsSwitch.didChange = [&](bool animated) { changes.push_back(animated); };
    itsSwitch.touchUpInside();
    itsSwitch.touchUpInside();
    EXPECT_EQ(seen, (std::vector{true, false}));
    EXPECT_EQ(changes, (std::vector{true, true}));
}

TEST(FakeSwitch, IgnoresTapsWhileLoadingButNotTheProgram) {
    SKVFakeSwitch itsSwitch;
    int events = 0;
    itsSwitch.addTarget([&](SKVFakeSwitch&) { ++events; });
    itsSwitch.setLoading(true);
    itsSwitch.setLoading(true);
    itsSwitch.touchUpInside();
    EXPECT_FALSE(itsSwitch.isOn());
    itsSwitch.setOn(true);
    EXPECT_TRUE(itsSwitch.isOn());
    EXPECT_TRUE(itsSwitch.isLoading());
    itsSwitch.setLoading(false);
    itsSwitch.touchUpInside();
    EXPECT_FALSE(itsSwitch.isOn());
    EXPECT_EQ(events, 1);
}

TEST(FakeSwitch, OneThatNeverLoadedStaysAsItIs) {
    SKVFakeSwitch itsSwitch;
    itsSwitch.setOn(true);
    itsSwitch.setLoading(false);
    EXPECT_TRUE(itsSwitch.isOn());
    EXPECT_TRUE(itsSwitch.userInteractionEnabled());
}

}  // namespace
}  // namespace skavlo
