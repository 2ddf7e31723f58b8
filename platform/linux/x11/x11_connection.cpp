#include "platform/linux/x11/x11_connection.h"

#include <sys/socket.h>

#include <cstring>
#include <utility>

#include "platform/linux/x11/connect_to_x.h"

namespace skavlo {

Result<std::unique_ptr<X11Connection>> X11Connection::open(AsioRunLoop& runLoop) {
    int screenNumber = 0;
    xcb_connection_t* connection = connectToX(&screenNumber);
    if (xcb_connection_has_error(connection) != 0) {
        xcb_disconnect(connection);
        return Error{"no X server can be reached"};
    }
    return std::unique_ptr<X11Connection>(new X11Connection(runLoop, connection, screenNumber));
}

X11Connection::X11Connection(AsioRunLoop& runLoop, xcb_connection_t* connection, int screenNumber)
    : connection_(connection), screenNumber_(screenNumber) {
    findScreen();
    const auto everybody = [this](const xcb_generic_event_t& event) {
        for (const EventHandler& handler : handlers_) handler(event);
    };
    watch_ = std::make_unique<XcbWatch>(runLoop.context(), connection_,
                                        XcbWatch::Handlers{.event = everybody,
                                                           .drained =
                                                               [this] {
                                                                   if (idle_) idle_();
                                                               },
                                                           .lost =
                                                               [this] {
                                                                   if (lost_) lost_();
                                                               }});
}

X11Connection::~X11Connection() {
    watch_.reset();
    xcb_disconnect(connection_);
}

void X11Connection::findScreen() {
    constexpr std::uint8_t kDepthWithAlpha = 32;
    auto screens = xcb_setup_roots_iterator(xcb_get_setup(connection_));
    for (int i = 0; i < screenNumber_; ++i) xcb_screen_next(&screens);
    screen_ = screens.data;
    for (auto depths = xcb_screen_allowed_depths_iterator(screen_); depths.rem > 0;
         xcb_depth_next(&depths)) {
        if (depths.data->depth != kDepthWithAlpha) continue;
        for (auto visuals = xcb_depth_visuals_iterator(depths.data); visuals.rem > 0;
             xcb_visualtype_next(&visuals)) {
            const bool blueLowest = visuals.data->red_mask == 0xff0000;
            if (visuals.data->_class == XCB_VISUAL_CLASS_TRUE_COLOR && blueLowest) {
                alphaVisual_ = visuals.data->visual_id;
                return;
            }
        }
    }
}

const xcb_query_extension_reply_t* X11Connection::extension(xcb_extension_t& extension) const {
    const auto* data = xcb_get_extension_data(connection_, &extension);
    return data && data->present ? data : nullptr;
}

xcb_atom_t X11Connection::atom(const char* name) const {
    const auto cookie =
        xcb_intern_atom(connection_, 0, static_cast<std::uint16_t>(std::strlen(name)), name);
    const XcbReply<xcb_intern_atom_reply_t> reply(
        xcb_intern_atom_reply(connection_, cookie, nullptr));
    return reply ? reply->atom : static_cast<xcb_atom_t>(XCB_ATOM_NONE);
}

bool X11Connection::isLocal() const {
    sockaddr_storage address{};
    socklen_t length = sizeof address;
    return getsockname(xcb_get_file_descriptor(connection_), reinterpret_cast<sockaddr*>(&address),
                       &length) == 0 &&
           address.ss_family == AF_UNIX;
}

void X11Connection::flush() {
    watch_->flush();
}

void X11Connection::flushSoon() {
    watch_->flushSoon();
}

}  // namespace skavlo
