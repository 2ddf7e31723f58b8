#include "platform/linux/x11/redirection.h"

#include <poll.h>
#include <xcb/composite.h>

#include <array>
#include <chrono>
#include <cstdint>

namespace skavlo {

namespace {

constexpr std::chrono::seconds kPatience{2};
constexpr int kLookAgainMilliseconds = 2;

// A window that can be seen, but lies outside of the screen.
xcb_window_t mapProbe(const X11Connection& connection) {
    auto* c = connection.get();
    const xcb_window_t probe = xcb_generate_id(c);
    const std::array<std::uint32_t, 1> unmanaged{1};
    xcb_create_window(c, XCB_COPY_FROM_PARENT, probe, connection.root(), -1, -1, 1, 1, 0,
                      XCB_WINDOW_CLASS_INPUT_OUTPUT, XCB_COPY_FROM_PARENT, XCB_CW_OVERRIDE_REDIRECT,
                      unmanaged.data());
    xcb_map_window(c, probe);
    return probe;
}

// Only redirected windows have a pixmap of their own.
bool isRedirected(const X11Connection& connection, xcb_window_t window) {
    auto* c = connection.get();
    const xcb_pixmap_t pixmap = xcb_generate_id(c);
    const XcbReply<xcb_generic_error_t> refused(
        xcb_request_check(c, xcb_composite_name_window_pixmap_checked(c, window, pixmap)));
    if (refused) return false;
    xcb_free_pixmap(c, pixmap);
    return true;
}

}  // namespace

void waitForRedirection(const X11Connection& connection) {
    auto* c = connection.get();
    if (!connection.extension(xcb_composite_id)) return;
    constexpr std::uint32_t kFirstWithPixmaps = 2;
    const XcbReply<xcb_composite_query_version_reply_t> version(xcb_composite_query_version_reply(
        c, xcb_composite_query_version(c, 0, kFirstWithPixmaps), nullptr));
    if (!version) return;
    const xcb_window_t probe = mapProbe(connection);
    const auto end = std::chrono::steady_clock::now() + kPatience;
    while (!isRedirected(connection, probe) && xcb_connection_has_error(c) == 0 &&
           std::chrono::steady_clock::now() < end) {
        poll(nullptr, 0, kLookAgainMilliseconds);
    }
    xcb_destroy_window(c, probe);
}

}  // namespace skavlo
