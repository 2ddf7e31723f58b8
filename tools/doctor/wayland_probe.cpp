#include "tools/doctor/wayland_probe.h"

#include <sys/socket.h>
#include <wayland-client.h>

#include <cstdarg>
#include <cstdint>
#include <filesystem>
#include <memory>

namespace skavlo::doctor {

namespace {

struct Disconnect {
    void operator()(wl_display* display) const { wl_display_disconnect(display); }
};

void added(void* data, wl_registry* /*registry*/, std::uint32_t /*name*/, const char* interface,
           std::uint32_t /*version*/) {
    static_cast<WaylandFacts*>(data)->interfaces.insert(interface);
}

void removed(void* /*data*/, wl_registry* /*registry*/, std::uint32_t /*name*/) {}

// Who listens at the other end of the socket.
std::string programBehind(int socket) {
    ucred peer{};
    socklen_t length = sizeof peer;
    if (getsockopt(socket, SOL_SOCKET, SO_PEERCRED, &peer, &length) != 0) return {};
    std::error_code error;
    const auto path =
        std::filesystem::read_symlink("/proc/" + std::to_string(peer.pid) + "/exe", error);
    return path.filename();
}

}  // namespace

std::optional<WaylandFacts> probeWayland() {
    // What is not there is a finding, not an error to be printed.
    wl_log_set_handler_client([](const char* /*format*/, va_list /*arguments*/) {});
    const std::unique_ptr<wl_display, Disconnect> display(wl_display_connect(nullptr));
    if (!display) return std::nullopt;
    WaylandFacts facts;
    wl_registry_listener listener{};
    listener.global = &added;
    listener.global_remove = &removed;
    wl_registry* registry = wl_display_get_registry(display.get());
    wl_registry_add_listener(registry, &listener, &facts);
    const bool answered = wl_display_roundtrip(display.get()) >= 0;
    facts.program = programBehind(wl_display_get_fd(display.get()));
    wl_registry_destroy(registry);
    if (!answered) return std::nullopt;
    return facts;
}

}  // namespace skavlo::doctor
