#pragma once

#include <memory>

#include "overlay/frame_loop.h"
#include "overlay/overlay_window.h"
#include "overlay/touch_canvas_view_controller.h"
#include "platform/window_server.h"

namespace skavlo {

// Builds the overlay at launch: canvas, window, and the window's place above everything else.
class OverlayAppDelegate {
  public:
    OverlayAppDelegate(OverlayServices services, WindowServer& windowServer);

    bool applicationDidFinishLaunchingWithOptions();

    [[nodiscard]] OverlayServices& services() { return services_; }

  private:
    OverlayServices services_;
    WindowServer& windowServer_;
    FrameLoop frameLoop_;

  public:
    // Declared after what they use, so that they go first.
    std::unique_ptr<OverlayWindow> window;
    std::unique_ptr<TouchCanvasViewController> canvasVC;
};

// The overlay's delegate; through it the input callback reaches the canvas.
extern std::unique_ptr<OverlayAppDelegate> g_skv_overlayAppDelegate;

}  // namespace skavlo
