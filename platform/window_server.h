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

// Called on the main thread; an empty one is not called.
struct FrameHandlers {
    std::function<void()> ready;        // readyForFrame() has become true
    std::function<void()> refresh;      // the display refreshes, after requestRefresh()
    std::function<void()> invalidated;  // size or contents changed: the next frame has age 0
};

class Window {
  public:
    virtual ~Window() = default;
    [[nodiscard]] virtual std::uint32_t contextId() const = 0;
    virtual void setHidden(bool hidden) = 0;
    virtual void makeKeyAndVisible() = 0;

    // False while the window server still reads the last committed frame.
    [[nodiscard]] virtual bool readyForFrame() const = 0;
    // Only while ready; a frame without pixels when the window server is gone.
    virtual Frame beginFrame() = 0;
    // Shows the frame; the rectangles do not overlap and cover all that changed.
    virtual void commitFrame(std::span<const PixelRect> damage) = 0;
    // Asks for one `refresh` at the display's next refresh.
    virtual void requestRefresh() = 0;
    // When a frame that is committed now will be seen; `now` where the window server does not say.
    [[nodiscard]] virtual MachTime presentationTime(MachTime now) const { return now; }
    virtual void setFrameHandlers(FrameHandlers handlers) = 0;
};

class WindowServer {
  public:
    virtual ~WindowServer() = default;
    virtual std::unique_ptr<Window> createWindow(Rect frame, const WindowTraits& traits) = 0;
    // Places the window of this context at a level above everything else.
    virtual void registerWindowWithContextID(std::uint32_t contextId, double level) = 0;
};

}  // namespace skavlo
