#include "platform/linux/loop/xcb_watch.h"

#include <asio/post.hpp>
#include <utility>

#include "platform/linux/xcb_reply.h"

namespace skavlo {

XcbWatch::XcbWatch(asio::io_context& context, xcb_connection_t* connection, Handlers handlers)
    : context_(context),
      connection_(connection),
      handlers_(std::move(handlers)),
      watch_(std::make_unique<DescriptorWatch>(context, xcb_get_file_descriptor(connection),
                                               [this] { pump(); })) {
    pumpSoon();
}

XcbWatch::~XcbWatch() = default;

void XcbWatch::flush() {
    xcb_flush(connection_);
    if (!pumping_ && xcb_total_read(connection_) != delivered_) pumpSoon();
}

void XcbWatch::flushSoon() {
    if (!pumping_) pumpSoon();  // pump() ends with a flush
}

void XcbWatch::pumpSoon() {
    if (std::exchange(scheduled_, true)) return;
    asio::post(context_, [this, alive = std::weak_ptr(alive_)] {
        if (!alive.expired()) pump();
    });
}

void XcbWatch::pump() {
    scheduled_ = false;
    pumping_ = true;
    do {
        while (const XcbReply<xcb_generic_event_t> event{xcb_poll_for_event(connection_)}) {
            const bool error = event->response_type == 0;  // of a request that nobody checks
            if (!error) handlers_.event(*event);
        }
        delivered_ = xcb_total_read(connection_);
        if (handlers_.drained) handlers_.drained();
        xcb_flush(connection_);
    } while (xcb_total_read(connection_) != delivered_);
    pumping_ = false;
    if (xcb_connection_has_error(connection_) == 0) return;
    watch_.reset();
    if (handlers_.lost) std::exchange(handlers_.lost, nullptr)();
}

}  // namespace skavlo
