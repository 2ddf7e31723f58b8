#include "platform/linux/x11/refresh_clock.h"

#include <xcb/present.h>

#include <utility>

namespace skavlo {

namespace {
constexpr double kRefreshSeconds = 1.0 / 60;
}

RefreshClock::RefreshClock(AsioRunLoop& runLoop, X11Connection& connection, xcb_window_t window,
                           std::function<void()> refresh)
    : runLoop_(runLoop), connection_(connection), window_(window), refresh_(std::move(refresh)) {
    auto* c = connection_.get();
    const auto* extension = connection_.extension(xcb_present_id);
    if (!extension) return;
    const XcbReply<xcb_present_query_version_reply_t> version(
        xcb_present_query_version_reply(c, xcb_present_query_version(c, 1, 0), nullptr));
    if (!version) return;
    presentOpcode_ = extension->major_opcode;
    xcb_present_select_input(c, xcb_generate_id(c), window_,
                             XCB_PRESENT_EVENT_MASK_COMPLETE_NOTIFY);
}

void RefreshClock::request() {
    if (std::exchange(requested_, true)) return;
    if (presentOpcode_ != 0) {
        xcb_present_notify_msc(connection_.get(), window_, 0, lastRefresh_ + 1, 0, 0);
        connection_.flushSoon();  // mostly in one write with the frame
        return;
    }
    timer_ = runLoop_.scheduledTimer(kRefreshSeconds, false, [this] {
        if (std::exchange(requested_, false)) refresh_();
    });
}

void RefreshClock::handle(const xcb_generic_event_t& event) {
    if (presentOpcode_ == 0 || (event.response_type & 0x7f) != XCB_GE_GENERIC) return;
    const auto& generic = reinterpret_cast<const xcb_ge_generic_event_t&>(event);
    if (generic.extension != presentOpcode_ || generic.event_type != XCB_PRESENT_COMPLETE_NOTIFY) {
        return;
    }
    const auto& complete = reinterpret_cast<const xcb_present_complete_notify_event_t&>(event);
    if (complete.window != window_ || complete.kind != XCB_PRESENT_COMPLETE_KIND_NOTIFY_MSC) return;
    lastRefresh_ = complete.msc;
    if (std::exchange(requested_, false)) refresh_();
}

}  // namespace skavlo
