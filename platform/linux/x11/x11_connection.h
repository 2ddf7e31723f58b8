#pragma once

#include <xcb/xcb.h>

#include <cstdint>
#include <cstdlib>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "platform/linux/loop/asio_run_loop.h"
#include "platform/linux/loop/xcb_watch.h"
#include "platform/linux/xcb_reply.h"
#include "platform/result.h"

namespace skavlo {

// One connection to the X server, read by the run loop. Requests that fail unnoticed are harmless:
// their errors are dropped.
class X11Connection {
  public:
    using EventHandler = std::function<void(const xcb_generic_event_t&)>;

    // Connects to what DISPLAY names.
    static Result<std::unique_ptr<X11Connection>> open(AsioRunLoop& runLoop);
    ~X11Connection();
    X11Connection(const X11Connection&) = delete;
    X11Connection& operator=(const X11Connection&) = delete;

    [[nodiscard]] xcb_connection_t* get() const { return connection_; }
    [[nodiscard]] const xcb_screen_t& screen() const { return *screen_; }
    [[nodiscard]] xcb_window_t root() const { return screen_->root; }
    [[nodiscard]] int screenNumber() const { return screenNumber_; }
    // The 32-bit visual with an alpha channel, or 0.
    [[nodiscard]] xcb_visualid_t alphaVisual() const { return alphaVisual_; }
    // Null when the server has no such extension.
    [[nodiscard]] const xcb_query_extension_reply_t* extension(xcb_extension_t& extension) const;
    [[nodiscard]] xcb_atom_t atom(const char* name) const;
    // The server runs on this machine and can be handed descriptors.
    [[nodiscard]] bool isLocal() const;

    // Every handler sees every event, on the main thread.
    void addEventHandler(EventHandler handler) { handlers_.push_back(std::move(handler)); }
    // Called once when the server is gone.
    void setLostHandler(std::function<void()> handler) { lost_ = std::move(handler); }
    // Called after each batch of events, before the loop sleeps again.
    void setIdleHandler(std::function<void()> handler) { idle_ = std::move(handler); }

    void flush();
    void flushSoon();  // with what follows, or when the loop comes round

  private:
    X11Connection(AsioRunLoop& runLoop, xcb_connection_t* connection, int screenNumber);
    void findScreen();

    xcb_connection_t* connection_;
    xcb_screen_t* screen_ = nullptr;
    int screenNumber_;
    xcb_visualid_t alphaVisual_ = 0;
    std::unique_ptr<XcbWatch> watch_;
    std::vector<EventHandler> handlers_;
    std::function<void()> lost_;
    std::function<void()> idle_;
};

}  // namespace skavlo
