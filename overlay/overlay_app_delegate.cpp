#include "overlay/overlay_app_delegate.h"

#include <utility>

namespace skavlo {

std::unique_ptr<OverlayAppDelegate> g_skv_overlayAppDelegate;

OverlayAppDelegate::OverlayAppDelegate(OverlayServices services, WindowServer& windowServer)
    : services_(std::move(services)),
      windowServer_(windowServer),
      frameLoop_(services_.runLoop, services_.clock, services_.screen) {}

bool OverlayAppDelegate::applicationDidFinishLaunchingWithOptions() {
    canvasVC = std::make_unique<TouchCanvasViewController>(
        services_, [this] { frameLoop_.setNeedsDisplay(); });
    const Rect bounds = services_.screen.bounds();
    // The canvas loads before the window exists: settings are read, observers registered.
    canvasVC->viewDidLoad();
    window =
        std::make_unique<OverlayWindow>(windowServer_.createWindow(bounds, OverlayWindow::kTraits));
    window->rootViewController = canvasVC.get();
    window->windowLevel = OverlayWindow::kWindowLevel;
    window->setHidden(false);
    window->backgroundColor = Colour{};
    frameLoop_.attach(canvasVC->skv_containerView, window->platformWindow());
    window->makeKeyAndVisible();
    windowServer_.registerWindowWithContextID(window->contextId(), window->windowLevel);
    return true;
}

}  // namespace skavlo
