#include "platform/linux/wayland/wayland_connection.h"

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <utility>

namespace skavlo {

Result<std::unique_ptr<WaylandConnection>> WaylandConnection::open(AsioRunLoop& runLoop) {
    const char* name = std::getenv("WAYLAND_DISPLAY");
    // Given none, the library would try a name of its own, which may be somebody else's.
    if (!name || !*name) return Error{"WAYLAND_DISPLAY names no compositor"};
    wl_display* display = wl_display_connect(name);
    if (!display) return Error{"the compositor that WAYLAND_DISPLAY names cannot be reached"};
    std::unique_ptr<WaylandConnection> connection(new WaylandConnection(runLoop, display));
    connection->listen();
    if (wl_display_roundtrip(display) < 0) return Error{"the compositor closed the connection"};
    return connection;
}

WaylandConnection::WaylandConnection(AsioRunLoop& runLoop, wl_display* display)
    : runLoop_(runLoop),
      display_(display),
      descriptor_(runLoop.context(), wl_display_get_fd(display)) {}

WaylandConnection::~WaylandConnection() {
    registry_.reset();
    descriptor_.release();
    wl_display_disconnect(display_);
}

void WaylandConnection::listen() {
    static constexpr wl_registry_listener kListener{
        .global =
            [](void* data, wl_registry*, std::uint32_t name, const char* interface,
               std::uint32_t version) {
                auto& self = *static_cast<WaylandConnection*>(data);
                self.globals_.push_back({name, interface, version});
                const Global added = self.globals_.back();
                if (self.added_) self.added_(added);
            },
        .global_remove =
            [](void* data, wl_registry*, std::uint32_t name) {
                auto& self = *static_cast<WaylandConnection*>(data);
                const auto it = std::find_if(self.globals_.begin(), self.globals_.end(),
                                             [&](const Global& g) { return g.name == name; });
                if (it == self.globals_.end()) return;
                const Global removed = std::move(*it);
                self.globals_.erase(it);
                if (self.removed_) self.removed_(removed);
            }};
    registry_.reset(wl_display_get_registry(display_));
    wl_registry_add_listener(registry_.get(), &kListener, this);
}

const WaylandConnection::Global* WaylandConnection::find(const wl_interface& interface) const {
    const auto it = std::find_if(globals_.begin(), globals_.end(),
                                 [&](const Global& g) { return g.interface == interface.name; });
    return it == globals_.end() ? nullptr : &*it;
}

bool WaylandConnection::offers(const wl_interface& interface) const {
    return find(interface) != nullptr;
}

void* WaylandConnection::bind(const Global& global, const wl_interface& interface,
                              std::uint32_t least, std::uint32_t most) {
    if (global.version < least) return nullptr;
    return wl_registry_bind(registry_.get(), global.name, &interface,
                            std::min(global.version, most));
}

void WaylandConnection::setGlobalHandlers(GlobalHandler added, GlobalHandler removed) {
    added_ = std::move(added);
    removed_ = std::move(removed);
}

void WaylandConnection::start() {
    wait();
    // Events that came with answers that were waited for wake nobody.
    runLoop_.async([this] { pump(); });
}

void WaylandConnection::wait() {
    descriptor_.async_wait(asio::posix::stream_descriptor::wait_read,
                           [this](const asio::error_code& error) {
                               if (error) return;
                               pump();
                               if (wl_display_get_error(display_) == 0) wait();
                           });
}

void WaylandConnection::pump() {
    while (wl_display_prepare_read(display_) != 0) wl_display_dispatch_pending(display_);
    wl_display_read_events(display_);  // what is there; waits for nothing
    wl_display_dispatch_pending(display_);
    if (idle_) idle_();
    flush();
    endOnError();
}

// What does not fit into the socket goes out when the compositor has read some of it.
void WaylandConnection::flush() {
    if (wl_display_flush(display_) >= 0 || errno != EAGAIN || waitsToWrite_) return;
    waitsToWrite_ = true;
    descriptor_.async_wait(asio::posix::stream_descriptor::wait_write,
                           [this](const asio::error_code& error) {
                               if (error) return;
                               waitsToWrite_ = false;
                               flush();
                           });
}

void WaylandConnection::endOnError() {
    if (wl_display_get_error(display_) != 0 && lost_) std::exchange(lost_, nullptr)();
}

}  // namespace skavlo
