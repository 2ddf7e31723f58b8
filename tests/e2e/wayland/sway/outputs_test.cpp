// The overlay and sway's outputs, which change and come.
#include <gmock/gmock.h>

#include "tests/e2e/wayland/sway/sway_rig.h"

namespace skavlo {
namespace {

using SwayOutputs = Sway;

TEST_F(SwayOutputs, FollowsModeAndRotation) {
    ASSERT_NO_FATAL_FAILURE(startAll());
    if (IsSkipped()) return;
    ASSERT_NO_FATAL_FAILURE(change("output HEADLESS-1 mode --custom 800x600"));
    captureUntil(
        [](const Bitmap& p) {
            return p.size == PixelSize{800, 600} && isClean(p);
        },
        "the smaller screen");
    ASSERT_NO_FATAL_FAILURE(expectMarker(0.25, 0.5, {200, 300}, kMarkerWidth));
    // Clockwise: the panel's left edge shows the picture's bottom.
    ASSERT_NO_FATAL_FAILURE(change("output HEADLESS-1 transform 90"));
    captureUntil(
        [](const Bitmap& p) {
            return p.size == PixelSize{600, 800} && isClean(p);
        },
        "the turned screen");
    ASSERT_NO_FATAL_FAILURE(expectMarker(0.25, 0.2, {120, 600}, kMarkerWidth));
    ASSERT_NO_FATAL_FAILURE(change("output HEADLESS-1 transform 180"));
    captureUntil(
        [](const Bitmap& p) {
            return p.size == PixelSize{800, 600} && isClean(p);
        },
        "the screen upside down");
    ASSERT_NO_FATAL_FAILURE(expectMarker(0.25, 0.2, {600, 480}, kMarkerWidth));
}

TEST_F(SwayOutputs, MovesToTheTouchscreensOutputWhenThatIsPluggedIn) {
    writeSettings(kWithoutTrail);
    ASSERT_NO_FATAL_FAILURE(startSway());
    if (IsSkipped()) return;
    ASSERT_NO_FATAL_FAILURE(plugTouchscreen({"WL_OUTPUT=HEADLESS-2"}));
    ASSERT_NO_FATAL_FAILURE(startOverlay());
    ASSERT_NO_FATAL_FAILURE(expectMarker(0.25, 0.5, {320, 360}, kMarkerWidth, "HEADLESS-1"));
    ASSERT_NO_FATAL_FAILURE(change("create_output"));
    ASSERT_NO_FATAL_FAILURE(change("output HEADLESS-2 mode --custom 1000x500"));
    ASSERT_NO_FATAL_FAILURE(expectMarker(0.25, 0.5, {250, 250}, kMarkerWidth, "HEADLESS-2"));
    EXPECT_TRUE(isClean(capture("HEADLESS-1")));
}

TEST_F(SwayOutputs, LiesOnTheOutputThatTheTouchscreenIsMappedTo) {
    writeSettings(kWithoutTrail);
    ASSERT_NO_FATAL_FAILURE(startSway());
    if (IsSkipped()) return;
    ASSERT_NO_FATAL_FAILURE(command("create_output"));
    ASSERT_NO_FATAL_FAILURE(command("output HEADLESS-2 mode --custom 1000x500 position 1280 0"));
    ASSERT_NO_FATAL_FAILURE(command("focus output HEADLESS-2"));
    ASSERT_NO_FATAL_FAILURE(startClient());
    ASSERT_EQ(client().windowSize(), (PixelSize{1000, 500}));
    ASSERT_NO_FATAL_FAILURE(plugTouchscreen({"WL_OUTPUT=HEADLESS-2"}));
    ASSERT_NO_FATAL_FAILURE(startOverlay());
    ASSERT_NO_FATAL_FAILURE(expectMarker(0.25, 0.5, {250, 250}, kMarkerWidth, "HEADLESS-2"));
}

}  // namespace
}  // namespace skavlo
