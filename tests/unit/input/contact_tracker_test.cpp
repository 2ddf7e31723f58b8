#include "platform/digitizer/contact_tracker.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <map>
#include <random>
#include <set>
#include <vector>

namespace skavlo {
namespace {

using ::testing::ElementsAre;
using ::testing::SizeIs;

constexpr std::uint32_t kScreen = 1;
constexpr std::uint32_t kOther = 2;

// The id by which the reader knows a finger: the index, unless as an unsigned it is 21 or above.
std::int64_t fingerId(const HidEvent& child) {
    return static_cast<std::uint32_t>(child.index) < 21 ? child.index : child.identity;
}

class ContactTrackerTest : public ::testing::Test {
  protected:
    ContactTrackerTest()
        : tracker(
              [] {
                  return Size{100, 200};
              },
              [this](const HidEvent& event) { events.push_back(event); }) {}

    void downFrame(ContactKey key, Point at = {50, 50}) {
        tracker.down(key, at);
        tracker.frame(++now);
    }
    void upFrame(ContactKey key) {
        tracker.up(key);
        tracker.frame(++now);
    }
    const HidEvent& last() { return events.back(); }

    static std::vector<std::int64_t> indices(const HidEvent& event) {
        std::vector<std::int64_t> result;
        for (const HidEvent& child : event.children) result.push_back(child.index);
        return result;
    }
    static std::vector<std::int64_t> touches(const HidEvent& event) {
        std::vector<std::int64_t> result;
        for (const HidEvent& child : event.children) result.push_back(child.touch);
        return result;
    }

    std::vector<HidEvent> events;
    ContactTracker tracker;
    MachTime now = 1000;
};

TEST_F(ContactTrackerTest, DownMotionUp) {
    downFrame({kScreen, 0}, {50, 100});
    EXPECT_EQ(last().type, kHidEventTypeDigitizer);
    EXPECT_EQ(last().timeStamp, now);
    EXPECT_EQ(last().touch, 1);
    ASSERT_THAT(last().children, SizeIs(1));
    EXPECT_EQ(last().children[0].type, kHidEventTypeDigitizer);
    EXPECT_EQ(last().children[0].x, 0.5);
    EXPECT_EQ(last().children[0].y, 0.5);
    const std::int64_t identity = last().children[0].identity;
    tracker.motion({kScreen, 0}, {75, 150});
    tracker.frame(++now);
    EXPECT_EQ(last().children[0].x, 0.75);
    EXPECT_EQ(last().children[0].y, 0.75);
    EXPECT_EQ(last().children[0].identity, identity);
    upFrame({kScreen, 0});
    EXPECT_EQ(last().touch, 0);
    EXPECT_THAT(touches(last()), ElementsAre(0));
    EXPECT_EQ(last().children[0].identity, identity);
    EXPECT_THAT(events, SizeIs(3));
}

TEST_F(ContactTrackerTest, UpWithoutDownSaysNothing) {
    upFrame({kScreen, 3});
    EXPECT_THAT(events, SizeIs(0));
}

TEST_F(ContactTrackerTest, FrameWithoutChangeSaysNothing) {
    downFrame({kScreen, 0});
    tracker.frame(++now);
    EXPECT_THAT(events, SizeIs(1));
}

TEST_F(ContactTrackerTest, DownAndUpInOneFrameIsShownAndLifted) {
    tracker.down({kScreen, 0}, {10, 10});
    tracker.up({kScreen, 0});
    tracker.frame(++now);
    ASSERT_THAT(events, SizeIs(1));
    EXPECT_THAT(touches(last()), ElementsAre(1, 0));
    EXPECT_THAT(indices(last()), ElementsAre(1, 1));
    EXPECT_EQ(last().touch, 0);
}

TEST_F(ContactTrackerTest, SlotReusedWithinAFrameIsTwoContacts) {
    downFrame({kScreen, 0});
    const std::int64_t identity = last().children[0].identity;
    tracker.up({kScreen, 0});
    tracker.down({kScreen, 0}, {20, 20});
    tracker.frame(++now);
    EXPECT_THAT(touches(last()), ElementsAre(0, 1));
    EXPECT_THAT(indices(last()), ElementsAre(1, 2));
    EXPECT_EQ(last().children[0].identity, identity);
    EXPECT_NE(last().children[1].identity, identity);
    EXPECT_EQ(last().touch, 1);
}

TEST_F(ContactTrackerTest, LostUpEndsAtTheNextDown) {
    downFrame({kScreen, 0});
    downFrame({kScreen, 0}, {20, 20});
    EXPECT_THAT(touches(last()), ElementsAre(0, 1));
    EXPECT_EQ(tracker.touching(), 1u);
    upFrame({kScreen, 0});
    EXPECT_EQ(tracker.touching(), 0u);
    EXPECT_EQ(last().touch, 0);
}

TEST_F(ContactTrackerTest, MotionWithoutDownBeginsTheContact) {
    tracker.motion({kScreen, 4}, {50, 50});
    tracker.frame(++now);
    EXPECT_THAT(touches(last()), ElementsAre(1));
    EXPECT_EQ(tracker.touching(), 1u);
}

TEST_F(ContactTrackerTest, UnplugMidTouchEndsThatDevicesContacts) {
    downFrame({kScreen, 0});
    downFrame({kScreen, 1});
    downFrame({kOther, 0});
    tracker.endDevice(kScreen, ++now);
    EXPECT_THAT(touches(last()), ElementsAre(0, 0, 1));
    EXPECT_EQ(last().touch, 1);
    EXPECT_EQ(last().timeStamp, now);
    tracker.endDevice(kScreen, ++now);
    EXPECT_EQ(last().timeStamp, now - 1) << "nothing is left to end";
}

TEST_F(ContactTrackerTest, CancelOfAllEndsEverything) {
    downFrame({kScreen, 0});
    downFrame({kOther, 0});
    tracker.endAll(++now);
    EXPECT_THAT(touches(last()), ElementsAre(0, 0));
    EXPECT_EQ(last().touch, 0);
    tracker.endAll(++now);
    EXPECT_THAT(events, SizeIs(3));
}

TEST_F(ContactTrackerTest, EndOfADeviceAlsoReportsWhatItsLastFrameBegan) {
    tracker.down({kScreen, 0}, {10, 10});
    tracker.endDevice(kScreen, ++now);
    EXPECT_THAT(touches(last()), ElementsAre(1, 0));
}

TEST_F(ContactTrackerTest, TwoDevicesWithTheSameSlotAreTwoContacts) {
    downFrame({kScreen, 0});
    downFrame({kOther, 0});
    EXPECT_THAT(indices(last()), ElementsAre(1, 2));
    upFrame({kScreen, 0});
    EXPECT_THAT(touches(last()), ElementsAre(0, 1));
    EXPECT_EQ(last().touch, 1);
}

TEST_F(ContactTrackerTest, EveryEventCarriesAllContacts) {
    downFrame({kScreen, 0});
    downFrame({kScreen, 1});
    downFrame({kScreen, 2});
    tracker.motion({kScreen, 1}, {1, 1});
    tracker.frame(++now);
    EXPECT_THAT(indices(last()), ElementsAre(1, 2, 3));
    EXPECT_THAT(touches(last()), ElementsAre(1, 1, 1));
}

TEST_F(ContactTrackerTest, SmallestFreeIndexIsReused) {
    for (int slot = 0; slot < 3; ++slot) downFrame({kScreen, slot});
    upFrame({kScreen, 1});
    downFrame({kScreen, 7});
    EXPECT_THAT(indices(last()), ElementsAre(1, 3, 2));
}

TEST_F(ContactTrackerTest, ParentTouchesWhileAnyContactDoes) {
    downFrame({kScreen, 0});
    downFrame({kScreen, 1});
    EXPECT_EQ(last().touch, 1);
    upFrame({kScreen, 0});
    EXPECT_EQ(last().touch, 1);
    upFrame({kScreen, 1});
    EXPECT_EQ(last().touch, 0);
}

class ManyContacts : public ContactTrackerTest, public ::testing::WithParamInterface<int> {};

TEST_P(ManyContacts, HaveUniqueFingerIds) {
    for (int slot = 0; slot < GetParam(); ++slot) tracker.down({kScreen, slot}, {10, 10});
    tracker.frame(++now);
    std::set<std::int64_t> ids;
    for (const HidEvent& child : last().children) ids.insert(fingerId(child));
    EXPECT_THAT(ids, SizeIs(GetParam()));
    // An id below the identities' range is an index, and the other way round.
    for (const HidEvent& child : last().children) EXPECT_GT(child.identity, 21);
    for (int slot = 0; slot < GetParam(); ++slot) tracker.up({kScreen, slot});
    tracker.frame(++now);
    std::set<std::int64_t> lifted;
    for (const HidEvent& child : last().children)
        if (!child.touch) lifted.insert(fingerId(child));
    EXPECT_EQ(lifted, ids);
}

INSTANTIATE_TEST_SUITE_P(Counts, ManyContacts, ::testing::Values(10, 11, 20, 21, 22, 40),
                         ::testing::PrintToStringParamName());

// Follows finger ids as the reader does; throws the dice over everything a device can do.
TEST_F(ContactTrackerTest, EveryContactThatBeganEnds) {
    std::mt19937 dice(20240611);
    const auto roll = [&](int sides) {
        return static_cast<int>(dice() % static_cast<unsigned>(sides));
    };
    for (int step = 0; step < 20000; ++step) {
        const ContactKey key{static_cast<std::uint32_t>(1 + roll(3)), roll(12)};
        switch (roll(8)) {
            case 0:
            case 1:
                tracker.down(key, {1, 1});
                break;
            case 2:
            case 3:
                tracker.motion(key, {2, 2});
                break;
            case 4:
            case 5:
                tracker.up(key);
                break;
            case 6:
                tracker.frame(++now);
                break;
            default:
                if (roll(20) == 0) tracker.endDevice(key.device, ++now);
        }
    }
    tracker.endAll(++now);
    std::map<std::int64_t, bool> touching;  // by identity
    for (const HidEvent& event : events) {
        std::set<std::int64_t> live;
        for (const HidEvent& child : event.children) {
            if (child.touch) {
                EXPECT_TRUE(live.insert(fingerId(child)).second) << "two fingers, one id";
                touching[child.identity] = true;
            } else {
                EXPECT_TRUE(touching[child.identity]) << "ended without having begun";
                touching.erase(child.identity);
                live.erase(fingerId(child));
            }
        }
        EXPECT_EQ(event.touch != 0, !live.empty());
    }
    EXPECT_THAT(touching, SizeIs(0));
    EXPECT_GT(events.size(), 1000u);
}

}  // namespace
}  // namespace skavlo
