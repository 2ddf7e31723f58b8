// The overlay on phoc.
#include <gmock/gmock.h>

#include "tests/e2e/wayland/wayland_rig.h"

namespace skavlo {
namespace {

using rig::Deadline;

class Phoc : public WaylandRig {};

TEST_F(Phoc, ATouchShowsAMarkerAndAClickReachesTheWindowBelow) {
    writeSettings(kWithoutTrail);
    ASSERT_NO_FATAL_FAILURE(startDemandingSession(
        "phoc", {.command = {"phoc", "-C", "@/config"},
                 .environment = {"WLR_BACKENDS=headless", "WLR_LIBINPUT_NO_DEVICES=1",
                                 "WLR_RENDERER=pixman", "GSETTINGS_BACKEND=memory"},
                 .files = {{"config",
                            "[core]\nxwayland=false\n\n[output:HEADLESS-1]\n"
                            "mode = 1280x720\nscale = 2\n"}},
                 .bus = true}));
    if (IsSkipped()) return;
    ASSERT_NO_FATAL_FAILURE(startClient());
    ASSERT_NO_FATAL_FAILURE(plugTouchscreen());
    ASSERT_NO_FATAL_FAILURE(startOverlay());
    touchAt(0.25, 0.5);
    captureUntil(markerAt({320, 360}, 2 * kMarkerWidth), "the marker");
    ASSERT_TRUE(client().click({160, 180}, {640, 360}));
    ASSERT_TRUE(
        client().waitUntil([&] { return !client().presses().empty(); }, Deadline(kPatience)));
    lift();
    // The pointer stays where the middle was.
    captureUntil(
        [](const Bitmap& p) { return isBackground(at(p, 320 - 50, 360)) && p.size.width == 1280; },
        "no marker");
}

}  // namespace
}  // namespace skavlo
