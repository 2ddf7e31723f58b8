// The overlay on an X server where mutter is the compositing manager.
#include "tests/e2e/overlay/overlay_rig.h"
#include "tests/e2e/wayland/wayland_session.h"
#include "tools/rig/session_bus.h"

namespace skavlo {
namespace {

class MutterOnX : public OverlayRig {
  protected:
    void startAll() {
        if (const auto reason = whyNotRunnable("mutter")) GTEST_SKIP() << *reason;
        ASSERT_NO_FATAL_FAILURE(startServer());
        auto bus = rig::SessionBus::start(server_->environment());
        ASSERT_TRUE(bus) << bus.error().message;
        bus_ = std::move(*bus);
        auto mutter = rig::Compositor::start(*server_, {"mutter", "--x11"},
                                             {bus_->environment(), "GSETTINGS_BACKEND=memory"});
        ASSERT_TRUE(mutter) << mutter.error().message;
        compositor_ = std::move(*mutter);
        ASSERT_NO_FATAL_FAILURE(startOverlay());
    }

    std::optional<rig::SessionBus> bus_;
};

// Without an accelerator mutter reads the pixels of every window that changes, which is no capture
// of the screen: that would take the markers away.
TEST_F(MutterOnX, AMarkerThatMovedStays) {
    ASSERT_NO_FATAL_FAILURE(startAll());
    if (IsSkipped()) return;
    const auto isMarked = [](const Bitmap& screen) { return at(screen, 640, 360) != kBackground; };
    touch().begin(0, {320, 360});
    for (int x = 320; x <= 640; x += 4) {
        touch().update(0, {double(x), 360});
        rig::waitReadable({}, rig::Deadline(std::chrono::milliseconds(16)));
    }
    captureUntil(isMarked, "the marker at its end");
    // Longer than a capture would be thought to last.
    const rig::Deadline deadline(std::chrono::seconds(3));
    while (!deadline.passed()) ASSERT_TRUE(isMarked(capture()));
    touch().end(0);
    captureUntil(isClean, "the background alone, at the end");
}

}  // namespace
}  // namespace skavlo
