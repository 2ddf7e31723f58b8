#pragma once

#include <xcb/shm.h>

#include <cstdint>
#include <span>
#include <vector>

#include "platform/geometry.h"
#include "platform/linux/x11/x11_connection.h"

namespace skavlo {

// Pixels that the X server reads: from shared memory where the server can reach it, else sent.
class X11Buffer {
  public:
    // All pixels are 0.
    X11Buffer(X11Connection& connection, PixelSize size);
    ~X11Buffer();
    X11Buffer(const X11Buffer&) = delete;
    X11Buffer& operator=(const X11Buffer&) = delete;

    [[nodiscard]] std::uint32_t* pixels() const { return pixels_; }
    [[nodiscard]] PixelSize size() const { return size_; }

    // Copies the rectangles to the same places of the window. The pixels may be changed again after
    // the server has said that it is done, see handle().
    void put(xcb_window_t window, xcb_gcontext_t gc, std::span<const PixelRect> rects);
    [[nodiscard]] bool beingRead() const { return beingRead_; }
    // True when the event said that the server is done.
    bool handle(const xcb_generic_event_t& event);
    // For servers without shared memory: true when everything sent has been drawn.
    bool pollFence();

  private:
    bool attachShared();
    void putShared(xcb_window_t window, xcb_gcontext_t gc, std::span<const PixelRect> rects);
    void send(xcb_window_t window, xcb_gcontext_t gc, const PixelRect& rect);

    X11Connection& connection_;
    PixelSize size_;
    std::size_t bytes_;
    std::uint32_t* pixels_ = nullptr;
    bool shared_ = false;
    bool beingRead_ = false;
    xcb_shm_seg_t segment_ = 0;
    int completionEvent_ = -1;
    unsigned fence_ = 0;  // sequence of the request whose reply says that all was drawn
    std::vector<std::uint32_t> packed_;
};

}  // namespace skavlo
