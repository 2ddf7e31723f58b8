#pragma once

#include <functional>
#include <memory>

#include "platform/linux/x11/x11_connection.h"

namespace skavlo {

// The display's refresh, from the Present extension; 60 times a second where there is none.
class RefreshClock {
  public:
    RefreshClock(AsioRunLoop& runLoop, X11Connection& connection, xcb_window_t window,
                 std::function<void()> refresh);

    // One call of `refresh` at the next refresh of the display that shows the window.
    void request();
    void handle(const xcb_generic_event_t& event);

  private:
    AsioRunLoop& runLoop_;
    X11Connection& connection_;
    xcb_window_t window_;
    std::function<void()> refresh_;
    std::uint8_t presentOpcode_ = 0;  // 0: no Present
    std::uint64_t lastRefresh_ = 0;   // the display's own count
    bool requested_ = false;
    std::unique_ptr<Timer> timer_;
};

}  // namespace skavlo
