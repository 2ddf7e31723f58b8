// The canvas's life outside the drawing of markers: when the overlay shows, clean-up, heartbeat.
#include <random>
#include <utility>

#include "overlay/hid_input.h"
#include "overlay/touch_canvas_view_controller.h"
#include "settings/loose_value.h"

namespace skavlo {

std::unique_ptr<HeartbeatView> g_skv_heartbeatView;

namespace {
constexpr double kHeartbeatSeconds = 5.0;
constexpr double kHeartbeatAlpha = 0.01;
}  // namespace

TouchCanvasViewController::TouchCanvasViewController(OverlayServices& services,
                                                     std::function<void()> needsDisplay)
    : skv_containerView(needsDisplay),
      services_(services),
      needsDisplay_(std::move(needsDisplay)) {}

TouchCanvasViewController::~TouchCanvasViewController() {
    services_.captureState.setDidChangeHandler({});
}

void TouchCanvasViewController::viewDidLoad() {
    skv_markerViews.clear();
    skv_trailAnchors.clear();
    skv_activeSingleFingerId = kNoFinger;
    // There is no timer yet, so a canvas that starts suppressed keeps its heartbeat until the next
    // reload or change of capture parks it.
    skv_reloadSettings();
    reloadRegistration_ = services_.notifications.notify_register_dispatch(
        kReloadNotification, [this] { skv_reloadSettings(); });
    services_.captureState.setDidChangeHandler([this] { skv_screenCaptureDidChange(); });
    skv_daemonHeartbeatTimer = services_.runLoop.scheduledTimer(kHeartbeatSeconds, true,
                                                                [this] { skv_renderHeartbeat(); });
}

void TouchCanvasViewController::skv_screenCaptureDidChange() {
    services_.runLoop.async([this, alive = std::weak_ptr(alive_)] {
        if (alive.expired()) return;
        decideVisibility(readSettings());
        applyVisibility();
    });
}

void TouchCanvasViewController::decideVisibility(const PropertyDictionary& settings) {
    const bool onlyShowInRecord = boolValue(lookUp(settings, "onlyShowInRecord"));
    const bool forceHide = boolValue(lookUp(settings, "forceHide"));
    skv_isSuppressed = forceHide || (onlyShowInRecord && !services_.captureState.isCaptured());
}

void TouchCanvasViewController::applyVisibility() {
    g_skv_hardware_suppressed = skv_isSuppressed;
    skv_forceClearAllGarbage();
    skv_containerView.setHidden(skv_isSuppressed);
    if (skv_isSuppressed) {
        skv_disable_hid_callback();
    } else {
        skv_enable_hid_callback();
    }
    if (skv_daemonHeartbeatTimer) {
        skv_daemonHeartbeatTimer->setFireDate(skv_isSuppressed ? FireDate::distantFuture
                                                               : FireDate::now);
    }
}

void TouchCanvasViewController::skv_forceClearAllGarbage() {
    const auto clearAll = [this, alive = std::weak_ptr(alive_)] {
        if (alive.expired()) return;
        skv_containerView.clear();
        skv_markerViews.clear();
        skv_trailAnchors.clear();
        skv_activeSingleFingerId = kNoFinger;
    };
    if (services_.runLoop.isMainThread()) {
        clearAll();
    } else {
        services_.runLoop.async(clearAll);
    }
}

void TouchCanvasViewController::skv_renderHeartbeat() {
    static std::minstd_rand random{std::random_device{}()};
    if (!g_skv_heartbeatView) {
        g_skv_heartbeatView = std::make_unique<HeartbeatView>(
            HeartbeatView{{{0, 0}, {1, 1}}, kHeartbeatAlpha, Colour{}});
    }
    // minstd's lowest bit only alternates; a higher one does not.
    constexpr unsigned kGoodBit = 16;
    const Colour previous = g_skv_heartbeatView->backgroundColor;
    g_skv_heartbeatView->backgroundColor =
        ((random() >> kGoodBit) & 1U) != 0 ? Colour{0, 0, 0, kHeartbeatAlpha} : Colour{};
    if (!(g_skv_heartbeatView->backgroundColor == previous)) skv_containerView.touchHeartbeat();
}

}  // namespace skavlo
