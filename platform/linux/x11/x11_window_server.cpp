#include "platform/linux/x11/x11_window_server.h"

#include <utility>

#include "platform/linux/x11/redirection.h"

namespace skavlo {

Result<std::unique_ptr<X11WindowServer>> X11WindowServer::connect(AsioRunLoop& runLoop,
                                                                  bool xWayland) {
    auto connection = X11Connection::open(runLoop);
    if (!connection) return connection.error();
    if ((*connection)->alphaVisual() == 0) {
        return Error{"the X server offers no visual with an alpha channel"};
    }
    if (xWayland) waitForRedirection(**connection);
    return std::unique_ptr<X11WindowServer>(new X11WindowServer(runLoop, std::move(*connection)));
}

X11WindowServer::X11WindowServer(AsioRunLoop& runLoop, std::unique_ptr<X11Connection> connection)
    : runLoop_(runLoop), connection_(std::move(connection)), outputs_(*connection_) {}

// The window takes its frame from the outputs, whose pixels need no rounding, and follows them.
std::unique_ptr<Window> X11WindowServer::createWindow(Rect /*frame*/,
                                                      const WindowTraits& /*traits*/) {
    auto window = std::make_unique<X11Window>(runLoop_, *connection_, outputs_);
    window_ = window.get();
    return window;
}

void X11WindowServer::registerWindowWithContextID(std::uint32_t contextId, double /*level*/) {
    if (window_ && window_->contextId() == contextId) window_->keepOnTop();
}

}  // namespace skavlo
