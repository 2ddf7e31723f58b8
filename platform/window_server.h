// The overlay's window and the frames drawn into it.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <span>

#include "platform/geometry.h"
#include "platform/time.h"

namespace skavlo {

// A buffer to draw the next frame into; valid until it is committed.
struct Frame {
    std::uint32_t* pixels = nullptr;  // premultiplied, blue in the lowest byte
    int stride = 0;                   // pixels from one row to the next
    PixelSize size;
    // 0: contents unknown, draw everything; n: holds the frame committed n frames ago.
    int age = 0;
};

// What the overlay's window is asked for; a constant answer each.
struct WindowTraits {
    bool isSystemWindow;
    bool isWindowServerHostingManaged;
    bool ignoresHitTest;
    bool isSecure;
    bool shouldCreateContextAsSecure;
};

class Window {
  public:
    virtual ~Window() = default;
    [[nodiscard]] virtual std::uint32_t contextId() const = 0;
    virtual void setHidden(bool hidden) = 0;
    virtual void makeKeyAndVisible() = 0;

    // False while the last committed frame is still on its way to the display.
    [[nodiscard]] virtual bool readyForFrame() const = 0;
    // Only while ready; a frame without pixels when the window server is gone.
    virtual Frame beginFrame() = 0;
    // Shows the frame; the rectangles do not overlap and cover all that changed.
    virtual void commitFrame(std::span<const PixelRect> damage) = 0;
    // Called on the main thread when the window becomes ready again, and when its size or contents
    // were lost and a whole frame (age 0) is wanted.
    virtual void setFrameHandler(std::function<void()> handler) = 0;
};

class WindowServer {
  public:
    virtual ~WindowServer() = default;
    virtual std::unique_ptr<Window> createWindow(Rect frame, const WindowTraits& traits) = 0;
    // Places the window of this context at a level above everything else.
    virtual void registerWindowWithContextID(std::uint32_t contextId, double level) = 0;
};

}  // namespace skavlo
