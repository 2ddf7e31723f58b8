#include "platform/linux/wayland/wayland_window_server.h"

#include <time.h>

#include <algorithm>

namespace skavlo {

namespace {

// The first version whose surfaces take damage in pixels of the buffer.
constexpr std::uint32_t kCompositorVersion = 4;

WaylandGlobals bindGlobals(WaylandConnection& connection) {
    return {.compositor = connection.bind<wl_compositor>(wl_compositor_interface,
                                                         kCompositorVersion, kCompositorVersion),
            .shm = connection.bind<wl_shm>(wl_shm_interface, 1, 1),
            .layerShell = connection.bind<zwlr_layer_shell_v1>(zwlr_layer_shell_v1_interface, 1, 1),
            .viewporter = connection.bind<wp_viewporter>(wp_viewporter_interface, 1, 1),
            .fractionalScale = connection.bind<wp_fractional_scale_manager_v1>(
                wp_fractional_scale_manager_v1_interface, 1, 1),
            .presentation = connection.bind<wp_presentation>(wp_presentation_interface, 1, 1)};
}

}  // namespace

bool WaylandWindowServer::serves(const WaylandConnection& connection) {
    const auto& globals = connection.globals();
    const bool recent = std::any_of(globals.begin(), globals.end(), [](const auto& global) {
        return global.interface == wl_compositor_interface.name &&
               global.version >= kCompositorVersion;
    });
    return recent && connection.offers(wl_shm_interface) &&
           connection.offers(zwlr_layer_shell_v1_interface);
}

WaylandWindowServer::WaylandWindowServer(AsioRunLoop& runLoop,
                                         std::unique_ptr<WaylandConnection> connection)
    : runLoop_(runLoop),
      connection_(std::move(connection)),
      globals_(bindGlobals(*connection_)),
      outputs_(*connection_) {
    outputs_.setHasViewports(globals_.viewporter != nullptr);
    outputs_.addChangeHandler([this] {
        if (window_) window_->outputsChanged();
    });
    listenPresentation();
    connection_->roundTrip();
    connection_->setIdleHandler([this] {
        if (window_) window_->settle();
    });
    connection_->start();
}

WaylandWindowServer::~WaylandWindowServer() {
    connection_->setIdleHandler({});
}

void WaylandWindowServer::listenPresentation() {
    static constexpr wp_presentation_listener kListener{
        .clock_id = [](void* data, wp_presentation*, std::uint32_t clock) {
            if (clock != CLOCK_MONOTONIC) return;
            auto& self = *static_cast<WaylandWindowServer*>(data);
            self.presentationIsMonotonic_ = true;
            if (self.window_) self.window_->setPresentationIsMonotonic();
        }};
    if (globals_.presentation) {
        wp_presentation_add_listener(globals_.presentation.get(), &kListener, this);
    }
}

// The window takes its frame from the compositor, and follows it.
std::unique_ptr<Window> WaylandWindowServer::createWindow(Rect /*frame*/,
                                                          const WindowTraits& /*traits*/) {
    auto window = std::make_unique<WaylandWindow>(runLoop_, *connection_, globals_, outputs_);
    if (presentationIsMonotonic_) window->setPresentationIsMonotonic();
    window_ = window.get();
    return window;
}

void WaylandWindowServer::setTouchOutput(const std::string& name) {
    outputs_.setTouchOutput(name);
    if (window_) window_->settle();
    connection_->flush();
}

}  // namespace skavlo
