#include <thread>

#include "overlay_fixture.h"

namespace skavlo {
namespace {

class CanvasVisibility : public OverlayFixture {
  protected:
    void expectVisible() {
        EXPECT_FALSE(canvas().skv_isSuppressed);
        EXPECT_FALSE(g_skv_hardware_suppressed);
        EXPECT_FALSE(scene().hidden());
        EXPECT_TRUE(hidClient.registered());
    }
    void expectSuppressed() {
        EXPECT_TRUE(canvas().skv_isSuppressed);
        EXPECT_TRUE(g_skv_hardware_suppressed);
        EXPECT_TRUE(scene().hidden());
        EXPECT_FALSE(hidClient.registered());
    }
    void capture(bool captured) {
        captureState.setCaptured(captured);
        loop.runPosted();
    }
};

TEST_F(CanvasVisibility, RecordOnlyShowsWhileTheScreenIsCaptured) {
    writeSettings({{"onlyShowInRecord", true}});
    launch();
    expectSuppressed();
    capture(true);
    expectVisible();
    capture(false);
    expectSuppressed();
}

TEST_F(CanvasVisibility, StartingACaptureClearsOnce) {
    launch();
    canvas().skv_handleTouch(1, {100, 100});
    captureState.setCaptured(true);
    EXPECT_EQ(liveMarkers(), 1U);  // the work is left to the main queue
    loop.runPosted();
    EXPECT_EQ(liveMarkers(), 0U);
    canvas().skv_handleTouch(1, {100, 100});
    loop.runPosted();
    EXPECT_EQ(liveMarkers(), 1U);
    expectVisible();
}

TEST_F(CanvasVisibility, ForceHideHidesEvenWhileCapturedAndCaptureChangesStillClear) {
    writeSettings({{"forceHide", true}, {"onlyShowInRecord", true}});
    captureState.setCaptured(true);
    launch();
    expectSuppressed();
    scene().addMarker(std::make_shared<Look>(), {1, 1}, 0);
    capture(false);
    EXPECT_TRUE(scene().generations().empty());
    expectSuppressed();
    scene().addMarker(std::make_shared<Look>(), {1, 1}, 0);
    capture(true);
    EXPECT_TRUE(scene().generations().empty());
    expectSuppressed();
}

TEST_F(CanvasVisibility, ACaptureChangeReadsTheFlagsAndNothingElse) {
    launch();
    writeSettings({{"forceHide", true}, {"colorSize", 100}});
    capture(true);
    expectSuppressed();
    EXPECT_EQ(canvas().skv_colorSize, 55);
}

TEST_F(CanvasVisibility, AfterAClearTheNextTouchIsAFreshMarkerThatPopsIn) {
    launch();
    canvas().skv_handleTouch(1, {100, 100});
    play(0.3);
    canvas().skv_forceClearAllGarbage();
    EXPECT_TRUE(scene().generations().empty());
    EXPECT_TRUE(canvas().skv_trailAnchors.empty());
    canvas().skv_handleTouch(1, {100, 100});
    EXPECT_EQ(scene().generations()[0].scale.valueAt(loop.mach_absolute_time()), 0.5);
}

TEST_F(CanvasVisibility, ClearingFromAnotherThreadHappensLaterOnTheMainThread) {
    launch();
    canvas().skv_handleTouch(1, {100, 100});
    std::thread([this] { canvas().skv_forceClearAllGarbage(); }).join();
    EXPECT_EQ(liveMarkers(), 1U);
    loop.runPosted();
    EXPECT_EQ(liveMarkers(), 0U);
}

TEST_F(CanvasVisibility, EventsStampedBeforeTheOverlayShowsAgainAreDropped) {
    writeSettings({{"onlyShowInRecord", true}});
    launch();
    HidEvent stale = parent(1, {child(1, 1)});
    advance(1);
    capture(true);
    deliver(stale);
    EXPECT_EQ(liveMarkers(), 0U);
    deliver(parent(1, {child(1, 1)}));
    EXPECT_EQ(liveMarkers(), 1U);
}

TEST_F(CanvasVisibility, SuppressingTakesTheMarkersOffTheScreen) {
    launch();
    canvas().skv_handleTouch(1, {100, 100});
    play(0.2);
    const std::size_t middle = 100 * 390 + 100;
    EXPECT_NE(windowServer.pixels()[middle], 0U);
    reload({{"forceHide", true}});
    for (const std::uint32_t pixel : windowServer.pixels()) ASSERT_EQ(pixel, 0U);
}

class Heartbeat : public OverlayFixture {};

TEST_F(Heartbeat, BeginsFiveSecondsAfterLaunch) {
    launch();
    advance(4.9);
    EXPECT_EQ(g_skv_heartbeatView, nullptr);
    advance(0.2);
    ASSERT_NE(g_skv_heartbeatView, nullptr);
    EXPECT_EQ(g_skv_heartbeatView->frame, (Rect{{0, 0}, {1, 1}}));
    EXPECT_EQ(g_skv_heartbeatView->alpha, 0.01);
}

TEST_F(Heartbeat, ACanvasThatStartsSuppressedStillHasARunningHeartbeat) {
    writeSettings({{"forceHide", true}});
    launch();
    advance(5.1);
    EXPECT_NE(g_skv_heartbeatView, nullptr);
}

TEST_F(Heartbeat, AReloadParksItWhileSuppressedAndFiresItAtOnceWhenVisible) {
    launch();
    reload({{"forceHide", true}});
    advance(60);
    EXPECT_EQ(g_skv_heartbeatView, nullptr);
    reload({});
    advance(0.001);
    EXPECT_NE(g_skv_heartbeatView, nullptr);
}

TEST_F(Heartbeat, AChangeOfCaptureParksIt) {
    writeSettings({{"onlyShowInRecord", true}});
    launch();  // suppressed, the heartbeat running
    captureState.setCaptured(true);
    captureState.setCaptured(false);
    loop.runPosted();
    advance(60);
    EXPECT_EQ(g_skv_heartbeatView, nullptr);
    captureState.setCaptured(true);
    loop.runPosted();
    advance(0.001);
    EXPECT_NE(g_skv_heartbeatView, nullptr);
}

TEST_F(Heartbeat, ThePixelStaysWhenTheOverlayIsSuppressed) {
    launch();
    advance(5.1);
    ASSERT_NE(g_skv_heartbeatView, nullptr);
    reload({{"forceHide", true}});
    EXPECT_NE(g_skv_heartbeatView, nullptr);
}

TEST_F(Heartbeat, AboutHalfOfTheTicksChangeThePixelAndEachChangeIsOneSmallFrame) {
    launch();
    const int before = windowServer.frames();
    constexpr int kTicks = 400;
    int black = 0;
    for (int i = 0; i < kTicks; ++i) {
        advance(5);
        loop.runPosted();
        if (g_skv_heartbeatView->backgroundColor.alpha > 0) ++black;
    }
    EXPECT_GT(black, kTicks / 4);
    EXPECT_LT(black, kTicks * 3 / 4);
    const int frames = windowServer.frames() - before;
    EXPECT_GT(frames, kTicks / 4);
    EXPECT_LT(frames, kTicks * 3 / 4);
    ASSERT_EQ(windowServer.lastDamage().size(), 1U);
    EXPECT_EQ(windowServer.lastDamage()[0].width, TileMask::kTile);
}

TEST_F(CanvasVisibility, ACanvasThatIsGoneHearsNothingMore) {
    launch();
    g_skv_overlayAppDelegate.reset();
    g_skv_heartbeatView.reset();
    notifications.notify_post("com.oxbrel.skavlo.reload");
    capture(true);
    advance(5.1);  // a heartbeat would have come
    loop.runPosted();
    EXPECT_EQ(g_skv_heartbeatView, nullptr);
}

}  // namespace
}  // namespace skavlo
