// The overlay on KWin: a fractional scale, and touches that KWin itself delivers.
#include <fcntl.h>
#include <gmock/gmock.h>
#include <unistd.h>

#include <cmath>
#include <filesystem>

#include "tests/e2e/wayland/extended/bus_client.h"
#include "tests/e2e/wayland/wayland_rig.h"

namespace skavlo {
namespace {

using rig::Deadline;
using testing::SizeIs;

class KWin : public WaylandRig {
  protected:
    // 1280 x 800 points on an output with as many pixels as that takes.
    void startKWin(const std::string& scale) {
        // A copy, because the installed one has a capability that not everybody can be given.
        const std::string run =
            "cp \"$(command -v kwin_wayland)\" @/ && exec @/kwin_wayland --virtual --width 1280 "
            "--height 800 --scale " +
            scale + " --socket wayland-kwin --no-lockscreen --no-global-shortcuts";
        startDemandingSession(
            "kwin_wayland",
            {.command = {"sh", "-c", run},
             .environment = {"KWIN_COMPOSE=O2", "KWIN_SCREENSHOT_NO_PERMISSION_CHECKS=1",
                             "KWIN_WAYLAND_NO_PERMISSION_CHECKS=1"},
             .bus = true});
        if (IsSkipped()) return;
        ASSERT_NO_FATAL_FAILURE(startClient());
        ASSERT_NO_FATAL_FAILURE(plugTouchscreen());
        auto bus = BusClient::connect(session());
        ASSERT_TRUE(bus) << bus.error().message;
        bus_ = std::move(*bus);
    }
    void untilPicture(const std::function<bool(const Bitmap&)>& wanted, const char* what) {
        const Deadline deadline(kPatience);
        while (true) {
            client().roundTrip();
            auto picture = captureKWin(*bus_, "Virtual-0");
            ASSERT_TRUE(picture) << picture.error().message;
            if (wanted(*picture)) return;
            ASSERT_FALSE(deadline.passed())
                << "never seen: " << what << "; the last picture had " << picture->size.width
                << " x " << picture->size.height << " pixels, the marker at "
                << centreOfMarker(*picture).x << "," << centreOfMarker(*picture).y << ", "
                << widthOfMarker(*picture) << " wide";
        }
    }

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

    std::optional<BusClient> bus_;
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

TEST_F(KWin, TouchesReachTheWindowBelowTheMarkers) {
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

}  // namespace
}  // namespace skavlo
