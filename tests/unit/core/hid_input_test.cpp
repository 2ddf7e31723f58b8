#include "overlay/hid_input.h"

#include <limits>

#include "overlay_fixture.h"
#include "platform/digitizer/coordinates.h"

namespace skavlo {
namespace {

constexpr Size kPhone{390, 844};

HidEvent contact(std::int64_t index, std::int64_t identity) {
    HidEvent event;
    event.type = kHidEventTypeDigitizer;
    event.index = index;
    event.identity = identity;
    event.touch = 1;
    return event;
}

TEST(FingerId, IsTheIndexUpToTwenty) {
    EXPECT_EQ(fingerId(contact(1, 77), 0), 1);
    EXPECT_EQ(fingerId(contact(20, 77), 0), 20);
}

TEST(FingerId, IsTheIdentityWhenTheIndexIsTooLarge) {
    EXPECT_EQ(fingerId(contact(21, 77), 0), 77);
    EXPECT_EQ(fingerId(contact(25, 77), 0), 77);
}

TEST(FingerId, ReadsANegativeIndexAsUnsignedAndTakesTheIdentity) {
    EXPECT_EQ(fingerId(contact(-1, 77), 3), 77);
}

TEST(FingerId, IsThePositionWhenIndexAndIdentityAreZero) {
    EXPECT_EQ(fingerId(contact(0, 0), 2), 3);
}

TEST(FingerId, IsThePositionWhenTheIdentityIsBelowOne) {
    EXPECT_EQ(fingerId(contact(-1, -5), 0), 1);
    EXPECT_EQ(fingerId(contact(99, 0), 4), 5);
}

TEST(FingerId, ReadsTheIdentityAsSigned32Bits) {
    EXPECT_EQ(fingerId(contact(30, std::int64_t{1} << 31), 0), 1);
    EXPECT_EQ(fingerId(contact(30, (std::int64_t{1} << 32) + 9), 0), 9);
}

TEST(ScreenPoint, ScalesXByTheShorterAndYByTheLongerSide) {
    EXPECT_EQ(screenPoint(0.5, 0.25, kPhone), (Point{195, 211}));
    EXPECT_EQ(screenPoint(0.5, 0.25, {844, 390}), (Point{195, 211}));
}

TEST(ScreenPoint, TakesLargeCoordinatesAsPoints) {
    EXPECT_EQ(screenPoint(150, 300, kPhone), (Point{150, 300}));
}

TEST(ScreenPoint, ScalesUpToTwiceTheScreen) {
    EXPECT_DOUBLE_EQ(screenPoint(1.9, 0, kPhone).x, 741);
    EXPECT_DOUBLE_EQ(screenPoint(2.0, 2.0, kPhone).y, 1688);
    EXPECT_EQ(screenPoint(2.1, 0.5, kPhone), (Point{2.1, 0.5}));
    EXPECT_EQ(screenPoint(-0.1, 0.5, kPhone), (Point{-0.1, 0.5}));
}

TEST(ScreenPoint, FindsEveryPlaceOfEveryScreenThatABackEndWrote) {
    for (const Size screen : {Size{390, 844}, Size{844, 390}, Size{1920, 1080}, Size{2560, 1080},
                              Size{1080, 2560}, Size{1280, 1280}, Size{5120, 1440}}) {
        for (int i = -2; i <= 12; ++i) {
            for (int k = -2; k <= 12; ++k) {
                const Point place{screen.width * i / 10, screen.height * k / 10};
                const Point written = digitizerCoordinates(place, screen);
                const Point read = screenPoint(written.x, written.y, screen);
                EXPECT_NEAR(read.x, place.x, 1e-9) << screen.width << 'x' << screen.height;
                EXPECT_NEAR(read.y, place.y, 1e-9) << screen.width << 'x' << screen.height;
            }
        }
    }
}

TEST(TouchBatch, KeepsTheOrderOfTheChildrenAndTheLastPointOfAnId) {
    HidEvent event = contact(0, 0);
    event.children = {contact(4, 0), contact(2, 0), contact(4, 0), contact(3, 0)};
    event.children[0].x = 50;
    event.children[2].x = 60;
    event.children[3].touch = 0;
    const TouchBatch batch = makeTouchBatch(event, kPhone);
    EXPECT_EQ(batch.activeIds, (std::vector<FingerId>{4, 2, 4}));
    EXPECT_EQ(batch.liftedIds, (std::vector<FingerId>{3}));
    EXPECT_EQ(batch.positions.at(4).x, 60);
    EXPECT_EQ(batch.parentTouch, 1);
}

TEST(TouchBatch, SkipsChildrenThatAreNoDigitizersButCountsTheirPosition) {
    HidEvent event = contact(0, 0);
    event.children = {contact(5, 0), contact(0, 0)};
    event.children[0].type = 3;
    EXPECT_EQ(makeTouchBatch(event, kPhone).activeIds, (std::vector<FingerId>{2}));
}

class HidCallback : public OverlayFixture {};

TEST_F(HidCallback, EnablingTwiceDoesNotMoveTheEnableTime) {
    launch();
    const MachTime first = g_skv_hidEnableTime;
    advance(1);
    skv_enable_hid_callback();
    EXPECT_EQ(g_skv_hidEnableTime, first);
}

TEST_F(HidCallback, RegisteringAgainAfterUnregisteringMovesTheEnableTime) {
    launch();
    const MachTime first = g_skv_hidEnableTime;
    advance(1);
    skv_disable_hid_callback();
    EXPECT_FALSE(hidClient.registered());
    skv_enable_hid_callback();
    EXPECT_TRUE(hidClient.registered());
    EXPECT_EQ(g_skv_hidEnableTime, first + kNanosecondsPerSecond);
}

TEST_F(HidCallback, WithoutAClientNothingIsRegistered) {
    skv_enable_hid_callback();
    EXPECT_FALSE(g_skv_hidRegistered);
    skv_disable_hid_callback();
    EXPECT_FALSE(g_skv_hidRegistered);
}

TEST_F(HidCallback, DropsAnEventStampedOneTickBeforeRegistrationAndTakesOneAtTheSameTick) {
    launch();
    HidEvent event = parent(1, {child(1, 1)});
    event.timeStamp = g_skv_hidEnableTime - 1;
    deliver(event);
    EXPECT_EQ(liveMarkers(), 0U);
    event.timeStamp = g_skv_hidEnableTime;
    deliver(event);
    EXPECT_EQ(liveMarkers(), 1U);
}

TEST_F(HidCallback, WhileSuppressedNothingReachesTheCanvasEvenIfRegistered) {
    launch();
    g_skv_hardware_suppressed = true;
    ASSERT_TRUE(hidClient.registered());
    deliver(parent(1, {child(1, 1)}));
    EXPECT_EQ(liveMarkers(), 0U);
}

TEST_F(HidCallback, IgnoresEventsThatAreNoDigitizerEvents) {
    launch();
    HidEvent key = parent(0);
    key.type = 3;
    deliver(parent(1, {child(1, 1)}));
    deliver(key);
    EXPECT_EQ(liveMarkers(), 1U);
}

TEST_F(HidCallback, BeforeTheCanvasExistsAnEventIsDropped) {
    g_skv_hidClient = &hidClient;
    skv_enable_hid_callback();
    deliver(parent(1, {child(1, 1)}));
    launch();
    EXPECT_EQ(liveMarkers(), 0U);
}

TEST_F(HidCallback, WorkIsLeftToTheMainQueue) {
    launch();
    hidClient.deliver(parent(1, {child(1, 1)}));
    EXPECT_EQ(liveMarkers(), 0U);
    loop.runPosted();
    EXPECT_EQ(liveMarkers(), 1U);
}

TEST_F(HidCallback, AParentWithoutChildrenThatTouchesNothingLiftsAll) {
    launch();
    deliver(parent(1, {child(1, 1), child(2, 1)}));
    deliver(parent(1));
    EXPECT_EQ(liveMarkers(), 2U);
    deliver(parent(0));
    EXPECT_EQ(liveMarkers(), 0U);
}

TEST_F(HidCallback, AParentThatTouchesNothingDeliversItsChildrenFirstAndThenLiftsTheRest) {
    launch();
    deliver(parent(1, {child(1, 1), child(2, 1)}));
    deliver(parent(0, {child(1, 1, 120, 130), child(3, 1), child(2, 0)}));
    EXPECT_EQ(liveMarkers(), 0U);
    ASSERT_EQ(scene().generations().size(), 3U);
    // Finger 1 was moved before all lifted; finger 2 lifted by itself, the others with all.
    EXPECT_EQ(scene().generations()[0].centre, (Point{120, 130}));
    EXPECT_EQ(scene().generations()[0].scale.to, 1.5);
    EXPECT_EQ(scene().generations()[1].scale.to, 2.0);
    EXPECT_EQ(scene().generations()[2].scale.to, 1.5);
}

TEST_F(HidCallback, ATouchQueuedWhenTheCanvasGoesAwayIsForgotten) {
    launch();
    const int before = windowServer.frames();
    hidClient.deliver(parent(1, {child(1, 1)}));
    g_skv_overlayAppDelegate->canvasVC.reset();
    hidClient.deliver(parent(1, {child(2, 1)}));
    g_skv_overlayAppDelegate->window.reset();
    loop.runPosted();
    EXPECT_EQ(windowServer.frames(), before);
}

}  // namespace
}  // namespace skavlo
