#pragma once

#include <memory>
#include <utility>

#include "platform/window_server.h"
#include "settings/colour.h"

namespace skavlo {

class TouchCanvasViewController;

// The transparent full-screen window that floats above everything and takes no touch.
class OverlayWindow {
  public:
    static constexpr WindowTraits kTraits{.isSystemWindow = true,
                                          .isWindowServerHostingManaged = false,
                                          .ignoresHitTest = true,
                                          .isSecure = true,
                                          .shouldCreateContextAsSecure = true};
    static constexpr double kWindowLevel = 10000010.0;

    explicit OverlayWindow(std::unique_ptr<Window> window) : window_(std::move(window)) {}

    [[nodiscard]] Window& platformWindow() { return *window_; }
    [[nodiscard]] std::uint32_t contextId() const { return window_->contextId(); }
    void setHidden(bool hidden) { window_->setHidden(hidden); }
    void makeKeyAndVisible() { window_->makeKeyAndVisible(); }

    TouchCanvasViewController* rootViewController = nullptr;
    double windowLevel = 0;
    Colour backgroundColor{0, 0, 0, 1};

  private:
    std::unique_ptr<Window> window_;
};

}  // namespace skavlo
