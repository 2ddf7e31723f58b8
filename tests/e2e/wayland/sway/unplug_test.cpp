// Outputs that are unplugged while the overlay lies on them.
#include <gmock/gmock.h>

#include "tests/e2e/wayland/sway/sway_rig.h"

namespace skavlo {
namespace {

constexpr Point kOnFirst{320, 360};
constexpr Point kOnSecond{250, 250};

// Outputs without hardware cannot be taken away, nor switched off. These are windows of another
// sway: WL-1, WL-2 and so on, a name being given once, and gone when their window is closed.
class SwayUnplug : public Sway {
  protected:
    ~SwayUnplug() override {
        overlay_.reset();
        session_.reset();  // before the one in whose windows it shows
    }
    // `output`: the one that the touchscreen is mapped to.
    void startNested(const std::string& output) {
        startSway("for_window [app_id=wlroots] floating enable\n");
        if (IsSkipped()) return;
        outer_ = std::move(*session_);
        startSession({.command = {"sway", "-c", "@/config"},
                      .environment = {"WLR_BACKENDS=wayland", "WLR_RENDERER=pixman",
                                      "SWAYSOCK=@/control", "WAYLAND_DISPLAY=" + outer_->socket()},
                      .files = {{"config",
                                 "output WL-1 mode --custom 1280x720 position 0 0\n"
                                 "output WL-2 mode --custom 1000x500 position 1280 0\n"}}});
        auto watcher = WaylandClient::connect(session().socket());
        ASSERT_TRUE(watcher) << watcher.error().message;
        watcher_ = std::move(*watcher);
        ASSERT_NO_FATAL_FAILURE(plugTouchscreen({"WL_OUTPUT=" + output}));
        writeSettings(kWithoutTrail);
    }
    // Returns when the overlay has heard of it.
    void plug() {
        const std::size_t before = watcher_->outputs();
        ASSERT_NO_FATAL_FAILURE(command("create_output"));
        ASSERT_NO_FATAL_FAILURE(waitUntilOverlayHeardOf(before + 1, *watcher_));
    }
    void unplug(const std::string& output) {
        const std::size_t before = watcher_->outputs();
        const auto done = outer_->run({"swaymsg", "-s", outer_->file("control"),
                                       "[title=\"wlroots - " + output + "\"] kill"});
        ASSERT_TRUE(done) << done.error().message;
        ASSERT_NO_FATAL_FAILURE(waitUntilOverlayHeardOf(before - 1, *watcher_));
    }

    // The touchscreen's output goes while one rests on it.
    void unplugUnderAFinger(const PropertyDictionary& settings = kWithoutTrail) {
        ASSERT_NO_FATAL_FAILURE(startNested("WL-2"));
        if (IsSkipped()) return;
        writeSettings(settings);
        ASSERT_NO_FATAL_FAILURE(startOverlay());
        ASSERT_NO_FATAL_FAILURE(plug());
        touchAt(0.25, 0.5);
        captureUntil(markerAt(kOnSecond, kMarkerWidth), "the marker under the finger", "WL-2");
        ASSERT_NO_FATAL_FAILURE(unplug("WL-2"));
    }

  private:
    std::optional<WaylandSession> outer_;
    std::unique_ptr<WaylandClient> watcher_;
};

TEST_F(SwayUnplug, TheOverlayComesAndGoesWithTheTouchscreensOutput) {
    ASSERT_NO_FATAL_FAILURE(startNested("WL-2"));
    if (IsSkipped()) return;
    ASSERT_NO_FATAL_FAILURE(startOverlay());
    ASSERT_NO_FATAL_FAILURE(expectMarker(0.25, 0.5, kOnFirst, kMarkerWidth, "WL-1"));
    ASSERT_NO_FATAL_FAILURE(plug());
    ASSERT_NO_FATAL_FAILURE(expectMarker(0.25, 0.5, kOnSecond, kMarkerWidth, "WL-2"));
    ASSERT_NO_FATAL_FAILURE(unplug("WL-2"));
    ASSERT_NO_FATAL_FAILURE(expectMarker(0.25, 0.5, kOnFirst, kMarkerWidth, "WL-1"));
}

TEST_F(SwayUnplug, AFingerThatIsDownLeavesNothingBehind) {
    ASSERT_NO_FATAL_FAILURE(unplugUnderAFinger());
    if (IsSkipped()) return;
    moveTo(0.75, 0.5);
    captureUntil(markerAt({960, 360}, kMarkerWidth), "the marker under the finger", "WL-1");
    lift();
    captureUntil(isClean, "the background alone", "WL-1");
    ASSERT_NO_FATAL_FAILURE(expectMarker(0.25, 0.5, kOnFirst, kMarkerWidth, "WL-1"));
}

// A marker at its place of the output that is gone would lie under no finger, which another one
// that comes to it shows: every event tells of all contacts. It has one again when it moves.
TEST_F(SwayUnplug, AFingerThatRestsHasNoMarkerOnTheNextOutputUntilItMoves) {
    ASSERT_NO_FATAL_FAILURE(unplugUnderAFinger());
    if (IsSkipped()) return;
    touchAt(0.75, 0.5, 1);
    captureUntil(markerAt({960, 360}, kMarkerWidth), "the other finger's marker alone", "WL-1");
    lift(1);
    captureUntil(isClean, "the background alone", "WL-1");
    moveTo(0.26, 0.5);
    captureUntil(markerAt({332.8, 360}, kMarkerWidth), "the marker under the finger", "WL-1");
    lift();
    captureUntil(isClean, "the background alone", "WL-1");
}

// It would for longer than anybody waits here.
TEST_F(SwayUnplug, NoMarkerFadesOnTheNextOutput) {
    ASSERT_NO_FATAL_FAILURE(
        unplugUnderAFinger({{"colorTracking", false}, {"colorAnimDuration", 600.0}}));
    if (IsSkipped()) return;
    touchAt(0.75, 0.5, 1);
    captureUntil(markerAt({960, 360}, kMarkerWidth), "the other finger's marker alone", "WL-1");
}

// It says nothing between the output's end and its own.
TEST_F(SwayUnplug, AFingerThatRestsLeavesNothingBehind) {
    ASSERT_NO_FATAL_FAILURE(unplugUnderAFinger());
    if (IsSkipped()) return;
    lift();
    captureUntil(isClean, "the background alone", "WL-1");
    ASSERT_NO_FATAL_FAILURE(expectMarker(0.25, 0.5, kOnFirst, kMarkerWidth, "WL-1"));
}

TEST_F(SwayUnplug, WithoutAnyTheOverlayLivesAndIsThereAgainWithTheNext) {
    ASSERT_NO_FATAL_FAILURE(startNested("WL-1"));
    if (IsSkipped()) return;
    ASSERT_NO_FATAL_FAILURE(startOverlay());
    ASSERT_NO_FATAL_FAILURE(expectMarker(0.25, 0.5, kOnFirst, kMarkerWidth, "WL-1"));
    ASSERT_NO_FATAL_FAILURE(unplug("WL-1"));
    // A whole touch while there is nothing to see it on, and one that goes on until there is.
    touchAt(0.5, 0.5);
    moveTo(0.6, 0.6);
    lift();
    touchAt(0.5, 0.5);
    EXPECT_TRUE(overlay_->running()) << complaints();
    ASSERT_NO_FATAL_FAILURE(plug());
    moveTo(0.75, 0.5);
    captureUntil(markerAt({750, 250}, kMarkerWidth), "the marker under the finger", "WL-2");
    lift();
    captureUntil(isClean, "the background alone", "WL-2");
    ASSERT_NO_FATAL_FAILURE(expectMarker(0.25, 0.5, kOnSecond, kMarkerWidth, "WL-2"));
}

}  // namespace
}  // namespace skavlo
