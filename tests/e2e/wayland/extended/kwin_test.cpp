// The overlay on KWin: a fractional scale, and touches that KWin itself delivers.
#include <fcntl.h>
#include <gmock/gmock.h>
#include <unistd.h>

#include <cmath>
#include <filesystem>

#include "tests/e2e/wayland/extended/kwin_rig.h"

namespace skavlo {
namespace {

using rig::Deadline;

class KWinTouches : public KWin {
  protected:
    // Every byte into touchNow_ is a touch of the place.
    void startInjector(PixelPoint place) {
        // A copy, for the session's user may not see where this was built.
        const std::string program = session().file("touch_injector");
        std::filesystem::copy_file(SKAVLO_TOUCH_INJECTOR, program);
        int ends[2];
        ASSERT_EQ(pipe2(ends, O_CLOEXEC), 0);
        const rig::FileDescriptor read(ends[0]);
        touchNow_ = rig::FileDescriptor(ends[1]);
        auto injector = session().start({program, session().socket(), std::to_string(place.x),
                                         std::to_string(place.y), std::to_string(read.get())},
                                        read.get());
        ASSERT_TRUE(injector) << injector.error().message;
        injector_ = std::move(*injector);
        ASSERT_TRUE(client().waitUntil([&] { return client().hasTouch(); }, Deadline(kPatience)))
            << "KWin has no touches";
        client().roundTrip();  // KWin knows that the client wants them
    }

    rig::FileDescriptor touchNow_;
    std::optional<rig::Child> injector_;
};

TEST_F(KWin, AtAFractionalScaleTheMarkerIsSharpAndUnderTheFinger) {
    writeSettings(kWithoutTrail);
    ASSERT_NO_FATAL_FAILURE(startKWin("1.25"));
    if (IsSkipped()) return;
    ASSERT_NO_FATAL_FAILURE(startOverlay());
    ASSERT_NO_FATAL_FAILURE(untilPicture(isClean, "the background alone"));
    touchAt(0.25, 0.5);
    const int width = static_cast<int>(std::lround(1.25 * kMarkerWidth));
    ASSERT_NO_FATAL_FAILURE(
        untilPicture(markerAt({0.25 * 1600, 0.5 * 1000}, width), "the marker under the finger"));
    lift();
    ASSERT_NO_FATAL_FAILURE(untilPicture(isClean, "the background alone, again"));
}

TEST_F(KWinTouches, TouchesReachTheWindowBelowTheMarkers) {
    writeSettings(kWithoutTrail);
    ASSERT_NO_FATAL_FAILURE(startKWin("1"));
    if (IsSkipped()) return;
    ASSERT_NO_FATAL_FAILURE(startOverlay());
    touchAt(0.25, 0.5);
    ASSERT_NO_FATAL_FAILURE(
        untilPicture(markerAt({320, 400}, kMarkerWidth), "the marker under the finger"));
    ASSERT_NO_FATAL_FAILURE(startInjector({320, 400}));
    constexpr std::size_t kTouches = 10;
    for (std::size_t i = 0; i < kTouches; ++i) {
        ASSERT_EQ(::write(touchNow_.get(), "!", 1), 1);
        const std::size_t reports = 2 * (i + 1);  // down and up
        ASSERT_TRUE(client().waitUntil([&] { return client().touches().size() == reports; },
                                       Deadline(kPatience)))
            << "touch " << i << " did not arrive";
        // Another frame of the overlay's between two touches.
        moveTo(0.25, i % 2 == 0 ? 0.51 : 0.5);
    }
    EXPECT_EQ(client().touches().front().place, (Point{320, 400}));
}

class KWinOutputs : public KWin {
  protected:
    // Returns when the overlay has heard of it.
    void enable(const std::string& output, bool on) {
        // A copy, for the session's user may not see where this was built.
        const std::string program = session().file("kwin_output");
        std::filesystem::copy_file(SKAVLO_KWIN_OUTPUT, program,
                                   std::filesystem::copy_options::skip_existing);
        const std::size_t before = client().outputs();
        const auto done = session().run({program, output, on ? "1" : "0"});
        ASSERT_TRUE(done) << done.error().message;
        ASSERT_NO_FATAL_FAILURE(waitUntilOverlayHeardOf(on ? before + 1 : before - 1, client()));
    }
    void expectMarker(const std::string& output) {
        touchAt(0.25, 0.5);
        ASSERT_NO_FATAL_FAILURE(untilPicture(markerAt({320, 400}, kMarkerWidth),
                                             "the marker under the finger", output));
        lift();
        ASSERT_NO_FATAL_FAILURE(untilPicture(isClean, "the background alone", output));
    }
};

TEST_F(KWinOutputs, TheOverlayLeavesTheTouchscreensOutputAndComesBackToIt) {
    writeSettings(kWithoutTrail);
    ASSERT_NO_FATAL_FAILURE(startKWin("1", 2, {"WL_OUTPUT=Virtual-1"}));
    if (IsSkipped()) return;
    ASSERT_NO_FATAL_FAILURE(startOverlay());
    ASSERT_NO_FATAL_FAILURE(expectMarker("Virtual-1"));
    ASSERT_NO_FATAL_FAILURE(enable("Virtual-1", false));
    ASSERT_NO_FATAL_FAILURE(expectMarker("Virtual-0"));
    ASSERT_NO_FATAL_FAILURE(enable("Virtual-1", true));
    ASSERT_NO_FATAL_FAILURE(expectMarker("Virtual-1"));
}

TEST_F(KWinOutputs, AFingerThatIsDownLeavesNothingBehind) {
    writeSettings(kWithoutTrail);
    ASSERT_NO_FATAL_FAILURE(startKWin("1", 2, {"WL_OUTPUT=Virtual-1"}));
    if (IsSkipped()) return;
    ASSERT_NO_FATAL_FAILURE(startOverlay());
    touchAt(0.25, 0.5);
    ASSERT_NO_FATAL_FAILURE(untilPicture(markerAt({320, 400}, kMarkerWidth),
                                         "the marker under the finger", "Virtual-1"));
    ASSERT_NO_FATAL_FAILURE(enable("Virtual-1", false));
    lift();
    ASSERT_NO_FATAL_FAILURE(untilPicture(isClean, "the background alone"));
    ASSERT_NO_FATAL_FAILURE(enable("Virtual-1", true));
    ASSERT_NO_FATAL_FAILURE(expectMarker("Virtual-1"));
}

}  // namespace
}  // namespace skavlo
