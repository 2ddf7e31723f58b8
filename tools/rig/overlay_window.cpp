#include "tools/rig/overlay_window.h"

#include <string>

namespace skavlo::rig {

namespace {

bool isMappedOverride(const Display& display, xcb_window_t window) {
    const XcbPointer<xcb_get_window_attributes_reply_t> reply(xcb_get_window_attributes_reply(
        display.get(), xcb_get_window_attributes(display.get(), window), nullptr));
    return reply && reply->override_redirect != 0 && reply->map_state == XCB_MAP_STATE_VIEWABLE;
}

bool coversRoot(const Display& display, xcb_window_t window) {
    const XcbPointer<xcb_get_geometry_reply_t> reply(
        xcb_get_geometry_reply(display.get(), xcb_get_geometry(display.get(), window), nullptr));
    return reply && reply->depth == 32 && reply->x == 0 && reply->y == 0 &&
           PixelSize{reply->width, reply->height} == display.rootSize();
}

// The property holds two strings, instance and class, each with a zero byte behind it.
bool hasClass(const Display& display, xcb_window_t window, const std::string& name) {
    const auto cookie =
        xcb_get_property(display.get(), 0, window, XCB_ATOM_WM_CLASS, XCB_ATOM_STRING, 0, 64);
    const XcbPointer<xcb_get_property_reply_t> reply(
        xcb_get_property_reply(display.get(), cookie, nullptr));
    if (!reply) {
        return false;
    }
    const std::string value(static_cast<const char*>(xcb_get_property_value(reply.get())),
                            static_cast<std::size_t>(xcb_get_property_value_length(reply.get())));
    const auto instanceEnd = value.find('\0');
    return instanceEnd != std::string::npos && value.substr(instanceEnd + 1).c_str() == name;
}

}  // namespace

std::optional<xcb_window_t> findOverlayWindow(const Display& display) {
    const XcbPointer<xcb_query_tree_reply_t> tree(xcb_query_tree_reply(
        display.get(), xcb_query_tree(display.get(), display.root()), nullptr));
    if (!tree) {
        return std::nullopt;
    }
    const xcb_window_t* windows = xcb_query_tree_children(tree.get());
    for (int i = 0; i < xcb_query_tree_children_length(tree.get()); ++i) {
        if (isMappedOverride(display, windows[i]) && coversRoot(display, windows[i]) &&
            hasClass(display, windows[i], "skavlo")) {
            return windows[i];
        }
    }
    return std::nullopt;
}

std::optional<xcb_window_t> waitForOverlayWindow(const Display& display, const Deadline& deadline,
                                                 const std::vector<int>& interruptions) {
    display.selectRootEvents(XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY);
    while (true) {
        if (const auto window = findOverlayWindow(display)) {
            return window;
        }
        if (!display.waitForEvent(deadline, interruptions)) {
            return std::nullopt;
        }
    }
}

}  // namespace skavlo::rig
