#pragma once

#include <xcb/xcb.h>

#include <asio/io_context.hpp>
#include <cstdint>
#include <functional>
#include <memory>

#include "platform/linux/loop/descriptor_watch.h"

namespace skavlo {

// Delivers what an X server sends. Writing to the connection and waiting for a reply also read,
// and of what has been read the descriptor tells no more: such events and replies are delivered as
// well. The connection stays its owner's and must outlive the watch, which must not be destroyed
// by its own calls.
class XcbWatch {
  public:
    struct Handlers {
        std::function<void(const xcb_generic_event_t&)> event;
        // Behind the events that have arrived so far; the place to look for replies.
        std::function<void()> drained;
        // Nothing more will come; called at most once.
        std::function<void()> lost;
    };

    // Looks at once, through the loop, for what has been read already.
    XcbWatch(asio::io_context& context, xcb_connection_t* connection, Handlers handlers);
    ~XcbWatch();
    XcbWatch(const XcbWatch&) = delete;
    XcbWatch& operator=(const XcbWatch&) = delete;

    // Sends what is written. What came in meanwhile is delivered through the loop.
    void flush();
    // The same through the loop, for what may as well travel with a write that follows.
    void flushSoon();

  private:
    void pump();
    void pumpSoon();

    asio::io_context& context_;
    xcb_connection_t* connection_;
    Handlers handlers_;
    std::unique_ptr<DescriptorWatch> watch_;
    std::uint64_t delivered_ = 0;  // bytes that had been read when the last look for events ended
    bool pumping_ = false;
    bool scheduled_ = false;
    std::shared_ptr<const bool> alive_ = std::make_shared<const bool>(true);
};

}  // namespace skavlo
