// The overlay on sway: its pixels, its place above everything, its end.
#include <gmock/gmock.h>
#include <sys/wait.h>

#include <array>
#include <filesystem>

#include "tests/e2e/wayland/sway/sway_rig.h"

namespace skavlo {
namespace {

using rig::Deadline;
using testing::HasSubstr;

TEST_F(Sway, ATouchShowsABlendedMarkerUnderTheFingerAndALiftTakesItAway) {
    ASSERT_NO_FATAL_FAILURE(startAll());
    if (IsSkipped()) return;
    touchAt(0.25, 0.5);
    const Bitmap picture = captureUntil(markerAt({320, 360}, kMarkerWidth), "the marker");
    // Grey 2/3 at 0.55 over the background 20 40 60.
    const std::uint32_t middle = at(picture, 320, 360);
    const std::array<double, 3> expected{0.55 * 170 + 0.45 * 0x20, 0.55 * 170 + 0.45 * 0x40,
                                         0.55 * 170 + 0.45 * 0x60};
    for (unsigned i = 0; i < 3; ++i) {
        EXPECT_NEAR((middle >> (16 - 8 * i)) & 0xffU, expected[i], 2);
    }
    lift();
    captureUntil(isClean, "the background alone");
}

TEST_F(Sway, AMovingFingerLeavesATrailThatFades) {
    ASSERT_NO_FATAL_FAILURE(startAll("", {{"colorAnimDuration", 2.0}}));
    if (IsSkipped()) return;
    touchAt(0.2, 0.5);
    for (int x = 21; x <= 60; ++x) moveTo(x * 0.01, 0.5);
    captureUntil(
        [](const Bitmap& p) {
            return p.size == kScreen && !isBackground(at(p, 768, 360)) &&
                   !isBackground(at(p, 512, 360));
        },
        "marker and trail");
    captureUntil(markerAt({768, 360}, kMarkerWidth), "the marker without its trail");
    lift();
    captureUntil(isClean, "the background alone");
}

TEST_F(Sway, StaysAboveFullScreenWindowsThatComeEarlierAndLater) {
    ASSERT_NO_FATAL_FAILURE(startAll());
    if (IsSkipped()) return;
    touchAt(0.5, 0.5);
    captureUntil(markerAt({640, 360}, kMarkerWidth), "the marker above the earlier window");
    auto later = WaylandClient::connect(session().socket());
    ASSERT_TRUE(later);
    constexpr std::uint32_t kLaterColour = 0xff00aa00;
    ASSERT_TRUE((*later)->showFullScreen(kLaterColour, Deadline(kPatience)));
    captureUntil(
        [&](const Bitmap& p) {
            (*later)->roundTrip();  // it is told its size in a second step
            return p.size == kScreen && at(p, 10, 10) == kLaterColour &&
                   at(p, 640, 360) != kLaterColour;
        },
        "the marker above the later window");
}

TEST_F(Sway, AClickReachesTheWindowBelowAMarker) {
    ASSERT_NO_FATAL_FAILURE(startAll());
    if (IsSkipped()) return;
    touchAt(0.5, 0.5);
    captureUntil(markerAt({640, 360}, kMarkerWidth), "the marker");
    ASSERT_TRUE(client().click({640, 360}, kScreen));
    ASSERT_TRUE(
        client().waitUntil([&] { return !client().presses().empty(); }, Deadline(kPatience)));
    EXPECT_EQ(client().presses().front(), (Point{640, 360}));
}

struct ScaleCase {
    const char* name;
    const char* scale;
    double factor;
};
void PrintTo(const ScaleCase& scale, std::ostream* out) {
    *out << scale.name;
}
class SwayScale : public Sway, public testing::WithParamInterface<ScaleCase> {};

// The output shows the marker in its own pixels: its size and place are exact.
TEST_P(SwayScale, TheMarkerGrowsWithIt) {
    const double factor = GetParam().factor;
    ASSERT_NO_FATAL_FAILURE(startAll(std::string("output HEADLESS-1 scale ") + GetParam().scale));
    if (IsSkipped()) return;
    const int width = static_cast<int>(std::lround(kMarkerWidth * factor));
    ASSERT_NO_FATAL_FAILURE(expectMarker(0.25, 0.5, {320, 360}, width));
    // And back, while it runs.
    ASSERT_NO_FATAL_FAILURE(change("output HEADLESS-1 scale 1"));
    ASSERT_NO_FATAL_FAILURE(expectMarker(0.75, 0.5, {960, 360}, kMarkerWidth));
}

INSTANTIATE_TEST_SUITE_P(Of, SwayScale,
                         testing::Values(ScaleCase{"Two", "2", 2},
                                         ScaleCase{"FiveQuarters", "1.25", 1.25}),
                         [](const auto& suite) { return std::string(suite.param.name); });

TEST_F(Sway, TheCompositorsEndEndsItAndRemovesItsFile) {
    ASSERT_NO_FATAL_FAILURE(startAll());
    if (IsSkipped()) return;
    ASSERT_TRUE(contents(pidFile()));
    session().compositor().signal(SIGKILL);
    const int status = endStatus();
    ASSERT_TRUE(WIFEXITED(status));
    EXPECT_NE(WEXITSTATUS(status), 0);
    EXPECT_FALSE(std::filesystem::exists(pidFile()));
}

TEST_F(Sway, SaysThatNoTouchscreenCanBeRead) {
    ASSERT_NO_FATAL_FAILURE(startSway());
    if (IsSkipped()) return;
    ASSERT_NO_FATAL_FAILURE(mockDevices());
    ASSERT_NO_FATAL_FAILURE(startOverlay());
    EXPECT_THAT(session().waitForContents("overlay", Deadline(kPatience)),
                HasSubstr("no touchscreen can be read"));
    EXPECT_TRUE(overlay_->running());
}

// XWayland, whose server has no authority file here and lets nobody in but its own user.
TEST_F(Sway, RootIsLetIntoXWaylandAsTheSessionsOwner) {
    ASSERT_NO_FATAL_FAILURE(startSwayWithXWayland());
    if (IsSkipped()) return;
    ASSERT_NO_FATAL_FAILURE(plugTouchscreen());
    ASSERT_NO_FATAL_FAILURE(startOverlayOnXWayland());
    // It reads touches only when it has found its window server.
    EXPECT_TRUE(screen_->wasOpened());
    EXPECT_TRUE(overlay_->running()) << complaints();
}

}  // namespace
}  // namespace skavlo
