// The overlay's X window on an X server whose screen changes its mode and is turned: XWayland, for
// the drivers without hardware of other servers refuse to turn.
#include <cmath>

#include "tests/e2e/wayland/sway/sway_rig.h"

namespace skavlo {
namespace {

// A place on the panel, as fractions of its native width and height, and where the picture shows
// it.
struct Place {
    double x;
    double y;
    Point inPicture;
};

class XRotation : public Sway {
  protected:
    void startAll() {
        // A plain disc, whose centre of mass is its middle.
        writeSettings({{"colorTracking", false}, {"colorBorderWidth", 0.0}});
        ASSERT_NO_FATAL_FAILURE(startSwayWithXWayland());
        if (IsSkipped()) return;
        if (const auto reason = whyNotRunnable("xrandr")) GTEST_SKIP() << *reason;
        ASSERT_NO_FATAL_FAILURE(startClient());
        ASSERT_NO_FATAL_FAILURE(plugTouchscreen());
        ASSERT_NO_FATAL_FAILURE(startOverlayOnXWayland());
    }
    // Returns when the X server says so of its output, as xrandr writes it, "800x600+0+0 left".
    void changeOutput(const std::string& command, const std::string& geometry) {
        ASSERT_NO_FATAL_FAILURE(this->command("output HEADLESS-1 " + command));
        const rig::Deadline deadline(kPatience);
        std::string said;
        while (said.find(" connected " + geometry + " (") == std::string::npos &&
               said.find(" connected primary " + geometry + " (") == std::string::npos) {
            ASSERT_FALSE(deadline.passed()) << "instead of " << geometry << ": " << said;
            auto answer = session().run({"xrandr", "-d", xDisplay_});
            ASSERT_TRUE(answer) << answer.error().message;
            said = *answer;
        }
    }
    // The finger reports its place again for every picture, for when it comes down the overlay may
    // not have heard of the change yet.
    void expectUnderTheFinger(const Place& place, PixelSize screen) {
        touchAt(place.x, place.y);
        captureUntil(
            [&](const Bitmap& picture) {
                moveTo(place.x, place.y);
                return picture.size == screen && isNear(centreOfMass(picture), place.inPicture) &&
                       std::abs(widthOfMarker(picture) - kMarkerWidth) <= 2;
            },
            "the marker in its full size under the finger");
        lift();
        captureUntil(isClean, "the background alone");
    }
    static bool isNear(Point a, Point b) {
        constexpr double kTolerance = 0.5;
        return std::abs(a.x - b.x) <= kTolerance && std::abs(a.y - b.y) <= kTolerance;
    }
};

TEST_F(XRotation, FollowsModeAndRotation) {
    ASSERT_NO_FATAL_FAILURE(startAll());
    if (IsSkipped()) return;
    ASSERT_NO_FATAL_FAILURE(expectUnderTheFinger({0.25, 0.2, {320, 144}}, kScreen));
    ASSERT_NO_FATAL_FAILURE(changeOutput("mode --custom 800x600", "800x600+0+0"));
    ASSERT_NO_FATAL_FAILURE(expectUnderTheFinger({0.25, 0.2, {200, 120}}, {800, 600}));
    ASSERT_NO_FATAL_FAILURE(changeOutput("transform 270", "600x800+0+0 left"));
    ASSERT_NO_FATAL_FAILURE(expectUnderTheFinger({0.25, 0.2, {480, 200}}, {600, 800}));
    // In what was not screen before.
    ASSERT_NO_FATAL_FAILURE(expectUnderTheFinger({0.95, 0.9, {60, 760}}, {600, 800}));
    ASSERT_NO_FATAL_FAILURE(changeOutput("transform 180", "800x600+0+0 inverted"));
    ASSERT_NO_FATAL_FAILURE(expectUnderTheFinger({0.25, 0.2, {600, 480}}, {800, 600}));
    ASSERT_NO_FATAL_FAILURE(changeOutput("transform 90", "600x800+0+0 right"));
    ASSERT_NO_FATAL_FAILURE(expectUnderTheFinger({0.25, 0.2, {120, 600}}, {600, 800}));
    ASSERT_NO_FATAL_FAILURE(changeOutput("transform normal", "800x600+0+0"));
    ASSERT_NO_FATAL_FAILURE(expectUnderTheFinger({0.25, 0.2, {200, 120}}, {800, 600}));
}

}  // namespace
}  // namespace skavlo
