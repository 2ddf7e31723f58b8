// The real libinput on devices that do not exist.
#include "platform/linux/input/libinput_source.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include "platform/linux/input/input_selector.h"
#include "tests/unit/input/support/event_log.h"
#include "tests/unit/input/support/mock_devices.h"

namespace skavlo::test {
namespace {

using ::testing::ElementsAre;
using ::testing::SizeIs;

constexpr int kWidth = 2000;
constexpr int kHeight = 1000;

class LibinputTest : public ::testing::Test {
  protected:
    void SetUp() override {
        ASSERT_TRUE(umockdev_in_mock_environment()) << "runs under umockdev-wrapper only";
        layout.outputs.push_back({.name = "eDP-1", .rect = {0, 0, kWidth, kHeight}});
        layout.desktop = {kWidth, kHeight};
    }

    void open() {
        InputOptions options;
        options.layout = [this] { return layout; };
        selector = std::make_unique<InputSelector>(context, std::move(options));
        selector->scheduleWithMainRunLoop();
        selector->registerEventCallback(&EventLog::callback, &log, nullptr);
    }

    bool waitFor(const std::function<bool()>& seen) { return runUntil(context, seen); }
    bool waitForEvents(std::size_t count) {
        return waitFor([&] { return log.events.size() >= count; });
    }
    bool waitForSource(InputSourceKind kind) {
        return waitFor([&] { return selector->source() == kind; });
    }
    static void expectAt(const HidEvent& child, double x, double y) {
        EXPECT_NEAR(child.x * kHeight, x, 0.5);  // by the shorter side
        EXPECT_NEAR(child.y * kWidth, y, 0.5);
    }

    asio::io_context context{1};
    OutputLayout layout;
    MockBed bed;
    EventLog log;
    std::unique_ptr<InputSelector> selector;
};

TEST_F(LibinputTest, WithoutDevicesThereIsNoSource) {
    open();
    EXPECT_EQ(selector->source(), InputSourceKind::none);
}

TEST_F(LibinputTest, TouchscreenThatIsThereIsRead) {
    MockDevice screen(bed, touchscreen(1));
    open();
    ASSERT_EQ(selector->source(), InputSourceKind::libinput);
    screen.down(0, 250, 100);
    const MachTime stamp = screen.sync();
    ASSERT_TRUE(waitForEvents(1));
    expectAt(log.last().children.at(0), 500, 200);
    EXPECT_EQ(log.last().timeStamp, stamp);
    EXPECT_EQ(log.last().touch, 1);
    screen.move(0, 999, 499);
    screen.sync();
    ASSERT_TRUE(waitForEvents(2));
    expectAt(log.last().children.at(0), 1998, 998);
    screen.up(0);
    screen.sync();
    ASSERT_TRUE(waitForEvents(3));
    EXPECT_EQ(log.last().touch, 0);
    EXPECT_THAT(log.events, SizeIs(3));
}

TEST_F(LibinputTest, TouchscreenComesGoesAndComesAgain) {
    open();
    auto screen = std::make_unique<MockDevice>(bed, touchscreen(1));
    ASSERT_TRUE(waitForSource(InputSourceKind::libinput));
    screen->down(0, 10, 10);
    screen->sync();
    ASSERT_TRUE(waitFor([&] { return log.touching() == 1; }));
    screen.reset();
    ASSERT_TRUE(waitForSource(InputSourceKind::none));
    screen = std::make_unique<MockDevice>(bed, touchscreen(2));
    ASSERT_TRUE(waitForSource(InputSourceKind::libinput));
    screen->down(3, 10, 10);
    screen->sync();
    ASSERT_TRUE(waitFor([&] { return log.touching() == 1; }));
}

TEST_F(LibinputTest, UnplugMidTouchEndsItsContactsOnly) {
    auto leaving = std::make_unique<MockDevice>(bed, touchscreen(1));
    MockDevice staying(bed, touchscreen(2));
    open();
    leaving->down(0, 10, 10);
    leaving->down(1, 20, 10);
    leaving->sync();
    ASSERT_TRUE(waitFor([&] { return log.touching() == 2; }));
    staying.down(0, 10, 10);
    staying.sync();
    ASSERT_TRUE(waitFor([&] { return log.touching() == 3; }));
    leaving.reset();
    ASSERT_TRUE(waitFor([&] { return log.ended() == 2; }));
    EXPECT_EQ(log.touching(), 1u);
    EXPECT_EQ(log.last().touch, 1);
    staying.up(0);
    staying.sync();
    ASSERT_TRUE(waitFor([&] { return log.ended() == 3; }));
    EXPECT_EQ(log.last().touch, 0);
}

TEST_F(LibinputTest, OneFrameIsOneEvent) {
    MockDevice screen(bed, touchscreen(1));
    open();
    for (int slot = 0; slot < 10; ++slot) screen.down(slot, 50 * slot, 100);
    screen.sync();
    ASSERT_TRUE(waitForEvents(1));
    EXPECT_EQ(log.touching(), 10u);
    EXPECT_THAT(log.events, SizeIs(1));
}

TEST_F(LibinputTest, MoreThanTwentyContactsKeepUniqueIds) {
    constexpr int kContacts = 25;
    MockDevice screen(bed, touchscreen(1, 32));
    open();
    for (int slot = 0; slot < kContacts; ++slot) screen.down(slot, 10 * slot, 100);
    screen.sync();
    ASSERT_TRUE(waitFor([&] { return log.touching() == kContacts; }));
    std::set<std::int64_t> ids;
    for (const HidEvent& child : log.last().children)
        ids.insert(static_cast<std::uint32_t>(child.index) < 21 ? child.index : child.identity);
    EXPECT_THAT(ids, SizeIs(kContacts));
    for (int slot = 0; slot < kContacts; ++slot) screen.up(slot);
    screen.sync();
    ASSERT_TRUE(waitFor([&] { return log.ended() == kContacts; }));
    EXPECT_EQ(log.last().touch, 0);
}

TEST_F(LibinputTest, SlotReusedAtOnceIsAnotherFinger) {
    MockDevice screen(bed, touchscreen(1));
    open();
    screen.down(0, 100, 100);
    screen.sync();
    ASSERT_TRUE(waitFor([&] { return log.touching() == 1; }));
    const std::int64_t first = log.last().children.at(0).identity;
    screen.up(0);
    screen.sync();
    screen.down(0, 700, 300);
    screen.sync();
    ASSERT_TRUE(waitFor([&] { return log.ended() == 1 && log.touching() == 1; }));
    EXPECT_NE(log.last().children.back().identity, first);
}

// The kernel threw events away: the finger of slot 0 has lifted meanwhile, slot 1 has come.
TEST_F(LibinputTest, LostEventsEndWhatIsNoLongerThere) {
    MockDevice screen(bed, touchscreen(1));
    open();
    screen.down(0, 100, 100);
    screen.sync();
    ASSERT_TRUE(waitFor([&] { return log.touching() == 1; }));
    screen.setSlotState(0, -1, 100, 100);
    screen.setSlotState(1, 77, 500, 250);
    screen.event(EV_SYN, SYN_DROPPED, 0);
    screen.sync();
    screen.move(1, 510, 250);
    screen.sync();
    ASSERT_TRUE(waitFor([&] { return log.ended() == 1 && log.touching() == 1; }));
    screen.up(1);
    screen.sync();
    ASSERT_TRUE(waitFor([&] { return log.ended() == 2; }));
    EXPECT_EQ(log.last().touch, 0);
}

// The panel finds out that one of two touches is a hand's, and libinput cancels that one.
TEST_F(LibinputTest, CancelledTouchEndsAndAnotherGoesOn) {
    MockDescription description = touchscreen(1);
    description.axes[ABS_MT_TOOL_TYPE] = {MT_TOOL_FINGER, MT_TOOL_PALM, 0};
    MockDevice screen(bed, description);
    open();
    screen.down(0, 100, 100);
    screen.down(1, 500, 250);
    screen.sync();
    ASSERT_TRUE(waitFor([&] { return log.touching() == 2; }));
    screen.event(EV_ABS, ABS_MT_SLOT, 0);
    screen.event(EV_ABS, ABS_MT_TOOL_TYPE, MT_TOOL_PALM);
    screen.sync();
    ASSERT_TRUE(waitFor([&] { return log.ended() == 1; }));
    EXPECT_EQ(log.touching(), 1u);
    EXPECT_EQ(log.last().touch, 1);
    // Of the hand nothing more is heard, whether it moves, passes for a finger or lifts.
    screen.move(0, 150, 150);
    screen.event(EV_ABS, ABS_MT_TOOL_TYPE, MT_TOOL_FINGER);
    screen.move(1, 510, 250);
    screen.sync();
    screen.up(0);
    screen.move(1, 520, 250);
    screen.sync();
    ASSERT_TRUE(waitForEvents(4));
    EXPECT_EQ(log.touching(), 1u);
    EXPECT_EQ(log.ended(), 1u);
    expectAt(log.last().children.at(0), 1040, 500);
    // The next one in its slot is a finger.
    screen.down(0, 100, 100);
    screen.sync();
    ASSERT_TRUE(waitFor([&] { return log.touching() == 2; }));
    EXPECT_EQ(log.ended(), 1u);
}

TEST_F(LibinputTest, PenTipIsAFinger) {
    MockDevice tablet(bed, pen(1));
    open();
    ASSERT_EQ(selector->source(), InputSourceKind::libinput);
    tablet.event(EV_KEY, BTN_TOOL_PEN, 1);
    tablet.event(EV_ABS, ABS_X, 900);
    tablet.event(EV_ABS, ABS_Y, 300);
    tablet.sync();
    tablet.event(EV_ABS, ABS_X, 1000);
    tablet.event(EV_ABS, ABS_Y, 400);
    tablet.event(EV_KEY, BTN_TOUCH, 1);
    tablet.sync();
    ASSERT_TRUE(waitFor([&] { return log.touching() == 1; }));
    EXPECT_THAT(log.events, SizeIs(1)) << "a pen that hovers is none";
    expectAt(log.last().children.at(0), 1000, 400);
    tablet.event(EV_ABS, ABS_X, 1200);
    tablet.event(EV_ABS, ABS_Y, 400);
    tablet.sync();
    ASSERT_TRUE(waitForEvents(2));
    EXPECT_EQ(log.touching(), 1u);
    tablet.event(EV_KEY, BTN_TOUCH, 0);
    tablet.sync();
    tablet.event(EV_KEY, BTN_TOOL_PEN, 0);
    tablet.sync();
    ASSERT_TRUE(waitFor([&] { return log.ended() == 1; }));
    EXPECT_EQ(log.last().touch, 0);
}

TEST_F(LibinputTest, PenUnpluggedOnThePaperEnds) {
    auto tablet = std::make_unique<MockDevice>(bed, pen(1));
    open();
    tablet->event(EV_KEY, BTN_TOOL_PEN, 1);
    tablet->event(EV_ABS, ABS_X, 900);
    tablet->event(EV_ABS, ABS_Y, 300);
    tablet->event(EV_KEY, BTN_TOUCH, 1);
    tablet->sync();
    ASSERT_TRUE(waitFor([&] { return log.touching() == 1; }));
    tablet.reset();
    ASSERT_TRUE(waitFor([&] { return log.ended() == 1; }));
    EXPECT_EQ(log.last().touch, 0);
}

TEST_F(LibinputTest, CalibrationOfUdevIsAppliedOnce) {
    MockDescription description = touchscreen(1);
    description.properties.push_back("LIBINPUT_CALIBRATION_MATRIX=0.5 0 0.25 0 1 0");
    MockDevice screen(bed, description);
    open();
    screen.down(0, 500, 250);
    screen.sync();
    ASSERT_TRUE(waitForEvents(1));
    expectAt(log.last().children.at(0), 0.5 * kWidth, 0.5 * kHeight);
    screen.move(0, 0, 0);
    screen.sync();
    ASSERT_TRUE(waitForEvents(2));
    expectAt(log.last().children.at(0), 0.25 * kWidth, 0);
}

TEST_F(LibinputTest, OutputOfUdevIsWhereTheDeviceLies) {
    layout.outputs.push_back({.name = "HDMI-1", .rect = {1000, 0, 1000, 1000}});
    MockDescription description = touchscreen(1);
    description.properties.push_back("WL_OUTPUT=HDMI-1");
    MockDevice screen(bed, description);
    open();
    screen.down(0, 500, 250);
    screen.sync();
    ASSERT_TRUE(waitForEvents(1));
    expectAt(log.last().children.at(0), 1500, 500);
    layout.outputs[1].rect = {0, 0, 1000, 1000};
    selector->layoutChanged();
    screen.move(0, 500, 260);
    screen.sync();
    ASSERT_TRUE(waitFor([&] { return log.events.size() > 1 && log.touching() == 1; }));
    expectAt(log.last().children.at(0), 500, 520);
}

// What happens to the outputs while a finger rests on the touchscreen of the second one, which is
// the main one.
struct RestCase {
    const char* name;
    void (*change)(OutputLayout& layout);
    bool stays;
};
void PrintTo(const RestCase& rest, std::ostream* out) {
    *out << rest.name;
}

class RestingFinger : public LibinputTest, public ::testing::WithParamInterface<RestCase> {};

TEST_P(RestingFinger, EndsWhenItsPlaceIsAnotherOneAndBeginsAnewWhenItMoves) {
    layout.outputs = {{.name = "HDMI-1", .rect = {0, 0, 1000, 1000}},
                      {.name = "DP-1", .rect = {1000, 0, 1000, 1000}}};
    layout.main = 1;
    MockDescription description = touchscreen(1);
    description.properties.push_back("WL_OUTPUT=DP-1");
    MockDevice screen(bed, description);
    open();
    screen.down(0, 500, 250);
    screen.sync();
    ASSERT_TRUE(waitForEvents(1));
    GetParam().change(layout);
    selector->layoutChanged();
    EXPECT_EQ(log.touching(), GetParam().stays ? 1U : 0U);
    EXPECT_EQ(log.events.size(), GetParam().stays ? 1U : 2U);
    screen.move(0, 500, 260);
    screen.sync();
    ASSERT_TRUE(waitFor([&] { return log.events.size() > 1 && log.touching() == 1; }));
    EXPECT_THAT(log.last().children, SizeIs(1));
}

INSTANTIATE_TEST_SUITE_P(
    While, RestingFinger,
    ::testing::Values(
        RestCase{"nothingChanges", [](OutputLayout&) {}, true},
        RestCase{"theOtherOutputGoes",
                 [](OutputLayout& layout) {
                     layout.outputs.erase(layout.outputs.begin());
                     layout.main = 0;
                 },
                 true},
        RestCase{
            "bothOutputsChangePlaces",
            [](OutputLayout& layout) { std::swap(layout.outputs[0].rect, layout.outputs[1].rect); },
            true},
        RestCase{"itsOutputGoes",
                 [](OutputLayout& layout) {
                     layout.outputs.pop_back();
                     layout.outputs[0].rect.width = 2000;
                     layout.main = 0;
                 },
                 false},
        RestCase{"allOutputsGo", [](OutputLayout& layout) { layout.outputs.clear(); }, false},
        RestCase{"itsOutputTurns",
                 [](OutputLayout& layout) { layout.outputs[1].rotation = Rotation::left; }, false},
        RestCase{"itsOutputGetsSmaller",
                 [](OutputLayout& layout) { layout.outputs[1].rect.width = 800; }, false},
        RestCase{"anotherOutputBecomesTheMainOne", [](OutputLayout& layout) { layout.main = 0; },
                 false},
        RestCase{"theScaleGrows", [](OutputLayout& layout) { layout.scale = 2; }, false}),
    [](const auto& suite) { return std::string(suite.param.name); });

TEST_F(LibinputTest, OtherDevicesAreNeverOpened) {
    MockDevice keys(bed, keyboard(1));
    open();
    EXPECT_EQ(selector->source(), InputSourceKind::none);
    MockDevice screen(bed, touchscreen(2));
    ASSERT_TRUE(waitForSource(InputSourceKind::libinput));
    EXPECT_TRUE(screen.wasOpened());
    EXPECT_FALSE(keys.wasOpened());
}

struct RefusingOpener final : DeviceOpener {
    int open(const char*, int) override { return -EACCES; }
    void close(int) override {}
};

TEST_F(LibinputTest, DeviceThatMayNotBeOpenedIsNoSource) {
    MockDevice screen(bed, touchscreen(1));
    InputOptions options;
    options.opener = std::make_shared<RefusingOpener>();
    InputSelector refused(context, std::move(options));
    refused.scheduleWithMainRunLoop();
    EXPECT_EQ(refused.source(), InputSourceKind::none);
}

class LibinputSourceTest : public LibinputTest {
  protected:
    void openSource(LibinputSource::XLookup lookup = {}) {
        auto opened =
            LibinputSource::open(context, opener, tracker, clock, layout, std::move(lookup));
        ASSERT_TRUE(opened);
        source = std::move(*opened);
    }

    DirectDeviceOpener opener;
    MonotonicClock clock;
    ContactTracker tracker{[this] { return mainSizeInPoints(layout); },
                           [this](const HidEvent& event) { log.events.push_back(event); }};
    std::unique_ptr<LibinputSource> source;
};

TEST_F(LibinputSourceTest, PlacementOfTheXServerIsTaken) {
    MockDescription description = touchscreen(1);
    description.properties.push_back("LIBINPUT_CALIBRATION_MATRIX=1 0 0 0 0.5 0");
    MockDevice screen(bed, description);
    std::string asked;
    std::optional<XDevicePlacement> answer =
        XDevicePlacement{{{0.5, 0, 0.5, 0, 1, 0}}, Affine{{1, 0, 0, 0, 1, 0}}};
    openSource([&](const std::string& node) {
        asked = node;
        return answer;
    });
    EXPECT_EQ(asked, "/dev/input/event1");
    screen.down(0, 500, 250);
    screen.sync();
    ASSERT_TRUE(waitForEvents(1));
    expectAt(log.last().children.at(0), 0.75 * kWidth, 0.5 * kHeight);
    answer.reset();  // back to what udev says
    source->placementsChanged();
    EXPECT_EQ(log.touching(), 0U) << "the finger rests";
    screen.move(0, 500, 260);
    screen.sync();
    ASSERT_TRUE(waitForEvents(3));
    expectAt(log.last().children.at(0), 0.5 * kWidth, 0.5 * 0.52 * kHeight);
}

// Two hands: one finger, a second, the first leaves and comes again, three more in one frame, one
// of them down and up again in one frame, which libinput calls the driver's fault and drops.
TEST_F(LibinputTest, RecordedTouchscreenIsSeenAsItWas) {
    constexpr double kWidthUnits = 4096;
    constexpr double kHeightUnits = 2304;
    RecordedDevice screen(bed, SKAVLO_RECORDED_TOUCHSCREEN);
    open();
    ASSERT_EQ(selector->source(), InputSourceKind::libinput);
    screen.play();
    ASSERT_TRUE(waitFor([&] { return log.ended() == 6; }));
    std::vector<std::size_t> touching;  // each number that follows another one
    for (const HidEvent& event : log.events) {
        const auto count = static_cast<std::size_t>(
            std::ranges::count_if(event.children, [](const auto& c) { return c.touch != 0; }));
        if (touching.empty() || touching.back() != count) touching.push_back(count);
    }
    EXPECT_THAT(touching, ElementsAre(1, 2, 1, 2, 5, 0));
    const auto expectUnits = [&](const HidEvent& child, double x, double y) {
        expectAt(child, x / kWidthUnits * kWidth, y / kHeightUnits * kHeight);
    };
    expectUnits(log.events.front().children.at(0), 600, 700);
    expectUnits(log.events.at(11).children.at(0), 1040, 1030);
    const auto fifth =
        std::ranges::find_if(log.events, [](const auto& e) { return e.children.size() == 5; });
    ASSERT_NE(fifth, log.events.end());
    expectUnits(fifth->children.at(4), 2000, 1000);
}

}  // namespace
}  // namespace skavlo::test
