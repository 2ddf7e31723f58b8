#include <cmath>
#include <limits>

#include "overlay_fixture.h"

namespace skavlo {
namespace {

class CanvasMarkers : public OverlayFixture {
  protected:
    const Generation& generation(std::size_t i) { return scene().generations()[i]; }
};

TEST_F(CanvasMarkers, ATouchDownDropsACopyUnderTheNewMarkerAtOnce) {
    launch();
    canvas().skv_handleTouch(1, {100, 200});
    EXPECT_EQ(liveMarkers(), 1U);
    ASSERT_EQ(copies(), 1U);
    EXPECT_EQ(generation(0).copies[0].centre, (Point{100, 200}));
    EXPECT_EQ(canvas().skv_trailAnchors.at(1), (Point{100, 200}));
}

TEST_F(CanvasMarkers, ANewMarkerPopsInFromHalfItsSize) {
    launch();
    canvas().skv_handleTouch(1, {100, 200});
    const MachTime now = loop.mach_absolute_time();
    EXPECT_EQ(generation(0).scale.valueAt(now), 0.5);
    EXPECT_NEAR(generation(0).scale.valueAt(now + 50'000'000), 0.75, 1e-6);
    EXPECT_EQ(generation(0).scale.valueAt(now + 100'000'000), 1.0);
}

TEST_F(CanvasMarkers, SevenPointsFromTheAnchorDropNoCopyAndEightDropOne) {
    launch();
    canvas().skv_handleTouch(1, {100, 200});
    canvas().skv_handleTouch(1, {107, 200});
    EXPECT_EQ(copies(), 1U);
    EXPECT_EQ(canvas().skv_trailAnchors.at(1), (Point{100, 200}));
    canvas().skv_handleTouch(1, {108, 200});
    EXPECT_EQ(copies(), 2U);
    EXPECT_EQ(canvas().skv_trailAnchors.at(1), (Point{108, 200}));
    EXPECT_EQ(generation(0).centre, (Point{108, 200}));
}

TEST_F(CanvasMarkers, WithoutTrailingNoCopyIsDropped) {
    writeSettings({{"colorTracking", false}});
    launch();
    canvas().skv_handleTouch(1, {100, 200});
    canvas().skv_handleTouch(1, {300, 200});
    EXPECT_EQ(copies(), 0U);
    EXPECT_TRUE(canvas().skv_trailAnchors.empty());
}

TEST_F(CanvasMarkers, CopiesFadeForTheModesDurationAndAreGone) {
    writeSettings({{"colorAnimDuration", 0.25}});
    launch();
    canvas().skv_handleTouch(1, {100, 200});
    play(0.2);
    EXPECT_EQ(copies(), 1U);
    play(0.1);
    EXPECT_EQ(copies(), 0U);
    EXPECT_EQ(liveMarkers(), 1U);
}

TEST_F(CanvasMarkers, ALiftScalesToTheModesLiftScaleFadesAndIsGone) {
    writeSettings({{"colorLiftScale", 3.0}, {"colorAnimDuration", 0.5}});
    launch();
    canvas().skv_handleTouch(1, {100, 200});
    play(0.2);
    canvas().skv_liftTouch(1);
    EXPECT_EQ(liveMarkers(), 0U);
    ASSERT_EQ(scene().generations().size(), 1U);
    const MachTime end = loop.mach_absolute_time() + 500'000'000;
    EXPECT_EQ(generation(0).scale.valueAt(end), 3.0);
    EXPECT_EQ(generation(0).opacity.valueAt(end), 0.0);
    EXPECT_NEAR(generation(0).opacity.valueAt(end - 250'000'000), 0.5, 1e-6);
    play(0.45);
    EXPECT_EQ(scene().generations().size(), 1U);
    play(0.1);
    EXPECT_EQ(scene().generations().size(), 0U);
}

TEST_F(CanvasMarkers, ALiftInMidPopInStartsFromTheScaleItHas) {
    launch();
    canvas().skv_handleTouch(1, {100, 200});
    advance(0.05);
    canvas().skv_liftTouch(1);
    EXPECT_NEAR(generation(0).scale.from, 0.75, 1e-6);
}

TEST_F(CanvasMarkers, ALiftScaleOfOneHalfShrinksTheMarkerWhileItFades) {
    writeSettings({{"colorLiftScale", 0.5}});
    launch();
    canvas().skv_handleTouch(1, {100, 200});
    play(0.2);
    canvas().skv_liftTouch(1);
    EXPECT_EQ(generation(0).scale.to, 0.5);
}

TEST_F(CanvasMarkers, ALiftScaleOfZeroOrBelowIsRaisedToOneHundredth) {
    for (const double scale : {0.0, -3.0}) {
        writeSettings({{"colorLiftScale", scale}});
        launch();
        canvas().skv_handleTouch(1, {100, 200});
        canvas().skv_liftTouch(1);
        EXPECT_EQ(generation(0).scale.to, 0.01);
    }
}

TEST_F(CanvasMarkers, ALiftScaleThatIsNoNumberPassesThroughAndDrawsNothingWrong) {
    launch();
    canvas().skv_colorLiftScale = std::numeric_limits<double>::quiet_NaN();
    canvas().skv_handleTouch(1, {100, 200});
    play(0.6);
    canvas().skv_liftTouch(1);
    EXPECT_TRUE(std::isnan(generation(0).scale.to));
    play(0.1);
    for (const std::uint32_t pixel : windowServer.pixels()) ASSERT_EQ(pixel, 0U);
    play(1);
    EXPECT_EQ(scene().generations().size(), 0U);
}

TEST_F(CanvasMarkers, LiftAllGrowsEveryMarkerToOneAndAHalfWhateverTheLiftScale) {
    writeSettings({{"colorLiftScale", 0.5}});
    launch();
    canvas().skv_handleTouch(1, {100, 200});
    canvas().skv_handleTouch(2, {200, 200});
    canvas().skv_liftAllTouches();
    EXPECT_EQ(generation(0).scale.to, 1.5);
    EXPECT_EQ(generation(1).scale.to, 1.5);
    EXPECT_EQ(liveMarkers(), 0U);
    EXPECT_TRUE(canvas().skv_trailAnchors.empty());
}

TEST_F(CanvasMarkers, FadingCopiesAreNotTouchedByALift) {
    launch();
    canvas().skv_handleTouch(1, {100, 200});
    canvas().skv_handleTouch(1, {120, 200});
    canvas().skv_liftTouch(1);
    EXPECT_EQ(copies(), 2U);
    canvas().skv_liftAllTouches();
    EXPECT_EQ(copies(), 2U);
}

TEST_F(CanvasMarkers, ATouchWithTheSameIdDuringTheLiftGetsAFreshMarkerAboveTheOldOne) {
    launch();
    canvas().skv_handleTouch(1, {100, 200});
    canvas().skv_liftTouch(1);
    canvas().skv_handleTouch(1, {110, 200});
    ASSERT_EQ(scene().generations().size(), 2U);
    EXPECT_TRUE(generation(0).lifting);
    EXPECT_FALSE(generation(1).lifting);
    EXPECT_EQ(generation(0).centre, (Point{100, 200}));
    EXPECT_EQ(generation(1).centre, (Point{110, 200}));
}

TEST_F(CanvasMarkers, LiftingAnUnknownFingerChangesNothing) {
    launch();
    canvas().skv_handleTouch(1, {100, 200});
    canvas().skv_liftTouch(9);
    EXPECT_EQ(liveMarkers(), 1U);
    EXPECT_FALSE(generation(0).lifting);
}

TEST_F(CanvasMarkers, DisplayModeThreeDrawsCirclesWithoutTrailsAndLiftsThemAsEmoji) {
    writeSettings({{"displayMode", 3}, {"emojiLiftScale", 4.0}, {"emojiAnimDuration", 2.0}});
    launch();
    canvas().skv_handleTouch(1, {100, 200});
    canvas().skv_handleTouch(1, {200, 200});
    EXPECT_EQ(copies(), 0U);
    EXPECT_TRUE(std::holds_alternative<CircleLook>(generation(0).look->shape));
    EXPECT_EQ(canvas().skv_currentAnimDuration(), 2.0);
    canvas().skv_liftTouch(1);
    EXPECT_EQ(generation(0).scale.to, 4.0);
    EXPECT_EQ(generation(0).opacity.seconds, 2.0);
}

TEST_F(CanvasMarkers, ANegativeDisplayModeDrawsCirclesToo) {
    writeSettings({{"displayMode", -1}});
    launch();
    canvas().skv_handleTouch(1, {100, 200});
    EXPECT_TRUE(std::holds_alternative<CircleLook>(generation(0).look->shape));
    EXPECT_EQ(copies(), 0U);
}

TEST_F(CanvasMarkers, EveryModeHasItsOwnTrailAndDurations) {
    const PropertyDictionary settings{
        {"colorAnimDuration", 1.0}, {"colorLiftScale", 1.25}, {"colorTracking", true},
        {"imageAnimDuration", 2.0}, {"imageLiftScale", 1.5},  {"imageTracking", false},
        {"emojiAnimDuration", 3.0}, {"emojiLiftScale", 1.75}, {"emojiTracking", true}};
    launch();
    const double durations[] = {1, 2, 3};
    const double scales[] = {1.25, 1.5, 1.75};
    const std::size_t trails[] = {1, 0, 1};
    for (int mode = 0; mode < 3; ++mode) {
        PropertyDictionary inMode = settings;
        inMode["displayMode"] = mode;
        reload(inMode);
        canvas().skv_handleTouch(1, {100, 200});
        EXPECT_EQ(copies(), trails[mode]);
        if (trails[mode] > 0) {
            EXPECT_EQ(generation(0).trailSeconds, durations[mode]);
        }
        EXPECT_EQ(canvas().skv_currentAnimDuration(), durations[mode]);
        canvas().skv_liftTouch(1);
        EXPECT_EQ(generation(0).scale.to, scales[mode]);
    }
}

TEST_F(CanvasMarkers, TheBorderTakesTheColourAlphaToo) {
    writeSettings({{"fillColor", PropertyArray{1, 0, 0, 0.9}},
                   {"borderColor", PropertyArray{0, 1, 0, 0.1}},
                   {"colorAlpha", 0.25}});
    launch();
    canvas().skv_handleTouch(1, {100, 200});
    const auto& circle = std::get<CircleLook>(generation(0).look->shape);
    EXPECT_EQ(circle.fill, (Colour{1, 0, 0, 0.25}));
    EXPECT_EQ(circle.border, (Colour{0, 1, 0, 0.25}));
    EXPECT_EQ(generation(0).look->opacity, 1.0);
}

TEST_F(CanvasMarkers, TheImagesAlphaIsItsViewsAlpha) {
    writeSettings({{"displayMode", 1}, {"imageAlpha", 0.25}});
    launch();
    canvas().skv_handleTouch(1, {100, 200});
    EXPECT_EQ(generation(0).look->opacity, 0.25);
    EXPECT_EQ(generation(0).look->size, 80);
}

TEST_F(CanvasMarkers, WhileSuppressedEveryTouchIsIgnored) {
    writeSettings({{"forceHide", true}});
    launch();
    canvas().skv_handleTouch(1, {100, 200});
    EXPECT_EQ(liveMarkers(), 0U);
}

class SingleFinger : public OverlayFixture {
  protected:
    void start() {
        writeSettings({{"singleFingerMode", 1}});
        launch();
    }
};

TEST_F(SingleFinger, OnlyTheFirstFingerIsDrawnAndTheSecondTakesOverWhenItLifts) {
    start();
    canvas().skv_handleTouch(1, {10, 10});
    canvas().skv_handleTouch(2, {50, 50});
    EXPECT_EQ(liveMarkers(), 1U);
    canvas().skv_liftTouch(1);
    EXPECT_EQ(canvas().skv_activeSingleFingerId, -1);
    canvas().skv_handleTouch(2, {60, 60});
    ASSERT_EQ(liveMarkers(), 1U);
    EXPECT_EQ(canvas().skv_activeSingleFingerId, 2);
    const auto& generation = scene().generations().back();
    EXPECT_EQ(generation.centre, (Point{60, 60}));
    EXPECT_EQ(generation.scale.from, 0.5);
}

TEST_F(SingleFinger, TheFirstTouchingChildOfTheFirstEventClaimsTheMode) {
    start();
    deliver(parent(1, {child(7, 0), child(5, 1), child(3, 1)}));
    EXPECT_EQ(canvas().skv_activeSingleFingerId, 5);
    EXPECT_EQ(liveMarkers(), 1U);
}

TEST_F(SingleFinger, LiftingAnotherFingerKeepsTheHold) {
    start();
    canvas().skv_handleTouch(1, {10, 10});
    canvas().skv_liftTouch(2);
    EXPECT_EQ(canvas().skv_activeSingleFingerId, 1);
}

TEST_F(SingleFinger, LiftingTheHolderWithoutAMarkerReleasesTheHold) {
    start();
    canvas().skv_activeSingleFingerId = 4;
    canvas().skv_liftTouch(4);
    EXPECT_EQ(canvas().skv_activeSingleFingerId, -1);
}

TEST_F(SingleFinger, LiftingAllAndClearingReleaseTheHold) {
    start();
    canvas().skv_handleTouch(1, {10, 10});
    canvas().skv_liftAllTouches();
    EXPECT_EQ(canvas().skv_activeSingleFingerId, -1);
    canvas().skv_handleTouch(2, {10, 10});
    EXPECT_EQ(canvas().skv_activeSingleFingerId, 2);
    canvas().skv_forceClearAllGarbage();
    EXPECT_EQ(canvas().skv_activeSingleFingerId, -1);
}

}  // namespace
}  // namespace skavlo
