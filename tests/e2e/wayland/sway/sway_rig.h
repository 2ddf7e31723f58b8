// The overlay on sway, with one output without hardware.
#pragma once

#include <gmock/gmock.h>

#include <string>

#include "tests/e2e/wayland/wayland_rig.h"

namespace skavlo {

class Sway : public WaylandRig {
  protected:
    static constexpr PixelSize kScreen{1280, 720};

    void startSway(const std::string& configuration = "") {
        startSession({.command = {"sway", "-c", "@/config"},
                      .environment = {"WLR_BACKENDS=headless", "WLR_LIBINPUT_NO_DEVICES=1",
                                      "WLR_RENDERER=pixman", "SWAYSOCK=@/control"},
                      .files = {{"config", "output HEADLESS-1 mode 1280x720\n" + configuration}}});
    }
    // With XWayland, whose name for X clients is xDisplay_ then.
    void startSwayWithXWayland() {
        ASSERT_NO_FATAL_FAILURE(
            startSway("exec sh -c 'echo -n $DISPLAY > $XDG_RUNTIME_DIR/display'\n"));
        if (IsSkipped()) return;
        if (const auto reason = whyNotRunnable("Xwayland")) GTEST_SKIP() << *reason;
        xDisplay_ = session().waitForContents("display", rig::Deadline(kPatience));
        ASSERT_THAT(xDisplay_, testing::StartsWith(":"));
    }
    void startOverlayOnXWayland() { startOverlay({"WAYLAND_DISPLAY", "DISPLAY=" + xDisplay_}); }
    // All that most tests need.
    void startAll(const std::string& configuration = "",
                  const PropertyDictionary& settings = kWithoutTrail) {
        writeSettings(settings);
        ASSERT_NO_FATAL_FAILURE(startSway(configuration));
        if (IsSkipped()) return;
        ASSERT_NO_FATAL_FAILURE(startClient());
        ASSERT_NO_FATAL_FAILURE(plugTouchscreen());
        ASSERT_NO_FATAL_FAILURE(startOverlay());
        captureUntil(isClean, "the background alone, at the start");
    }
    void command(const std::string& text) {
        const auto done = session().run({"swaymsg", "-s", session().file("control"), text});
        ASSERT_TRUE(done) << done.error().message;
    }
    // A command that changes outputs. Returns when the overlay has heard of it, so that the next
    // touch is one of the new outputs.
    void change(const std::string& text) {
        auto other = WaylandClient::connect(session().socket());
        ASSERT_TRUE(other) << other.error().message;
        ASSERT_NO_FATAL_FAILURE(command(text));
        ASSERT_NO_FATAL_FAILURE(waitUntilOverlayHeard(**other));
    }
    void expectMarker(double x, double y, Point place, int width, const std::string& output = "") {
        touchAt(x, y);
        captureUntil(markerAt(place, width), "the marker under the finger", output);
        lift();
        captureUntil(isClean, "the background alone", output);
    }

    std::string xDisplay_;
};

}  // namespace skavlo
