#pragma once

#include <functional>

#include "platform/geometry.h"

namespace skavlo {

// Whether the screen is being recorded, mirrored or otherwise captured.
class CaptureState {
  public:
    virtual ~CaptureState() = default;
    [[nodiscard]] virtual bool isCaptured() const = 0;
    // One handler, called on the main thread after each change; empty: none.
    virtual void setDidChangeHandler(std::function<void()> handler) = 0;
};

// The main screen, on which the overlay lies.
class Screen {
  public:
    virtual ~Screen() = default;
    [[nodiscard]] virtual Rect bounds() const = 0;   // points, origin (0, 0)
    [[nodiscard]] virtual double scale() const = 0;  // pixels per point
};

}  // namespace skavlo
