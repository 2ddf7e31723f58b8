#include "tools/rig/display.h"

#include <string_view>

namespace skavlo::rig {

namespace {

constexpr std::string_view kCookieProtocol = "MIT-MAGIC-COOKIE-1";

}  // namespace

Result<Display> Display::connect(const std::string& name, const std::string& cookie) {
    std::string protocol(kCookieProtocol);
    std::string secret = cookie;
    xcb_auth_info_t authority = {static_cast<int>(protocol.size()), protocol.data(),
                                 static_cast<int>(secret.size()), secret.data()};
    xcb_connection_t* connection =
        cookie.empty() ? xcb_connect(name.c_str(), nullptr)
                       : xcb_connect_to_display_with_auth_info(name.c_str(), &authority, nullptr);
    Display display(connection);
    if (xcb_connection_has_error(connection) != 0) {
        return Error{"cannot connect to the display \"" + name + "\""};
    }
    return display;
}

const xcb_screen_t& Display::screen() const {
    return *xcb_setup_roots_iterator(xcb_get_setup(get())).data;
}

PixelSize Display::rootSize() const {
    const XcbPointer<xcb_get_geometry_reply_t> reply(
        xcb_get_geometry_reply(get(), xcb_get_geometry(get(), root()), nullptr));
    return reply ? PixelSize{reply->width, reply->height} : PixelSize{};
}

xcb_atom_t Display::atom(const std::string& name) const {
    const auto cookie =
        xcb_intern_atom(get(), 0, static_cast<std::uint16_t>(name.size()), name.c_str());
    const XcbPointer<xcb_intern_atom_reply_t> reply(xcb_intern_atom_reply(get(), cookie, nullptr));
    return reply ? reply->atom : static_cast<xcb_atom_t>(XCB_ATOM_NONE);
}

void Display::selectRootEvents(std::uint32_t mask) const {
    const XcbPointer<xcb_get_window_attributes_reply_t> reply(
        xcb_get_window_attributes_reply(get(), xcb_get_window_attributes(get(), root()), nullptr));
    const std::uint32_t all = mask | (reply ? reply->your_event_mask : 0);
    xcb_change_window_attributes(get(), root(), XCB_CW_EVENT_MASK, &all);
    sync();
}

XcbPointer<xcb_generic_event_t> Display::waitForEvent(const Deadline& deadline,
                                                      const std::vector<int>& interruptions) const {
    xcb_flush(get());
    std::vector<int> descriptors = interruptions;
    descriptors.insert(descriptors.begin(), xcb_get_file_descriptor(get()));
    while (true) {
        XcbPointer<xcb_generic_event_t> event(xcb_poll_for_event(get()));
        if (event || xcb_connection_has_error(get()) != 0) {
            return event;
        }
        if (waitReadable(descriptors, deadline) != descriptors.front()) {
            return nullptr;
        }
    }
}

bool Display::sync() const {
    const XcbPointer<xcb_get_input_focus_reply_t> reply(
        xcb_get_input_focus_reply(get(), xcb_get_input_focus(get()), nullptr));
    return reply != nullptr;
}

}  // namespace skavlo::rig
