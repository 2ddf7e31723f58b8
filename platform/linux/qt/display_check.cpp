#include "platform/linux/qt/display_check.h"

#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>
#include <xcb/xcb.h>

#include <QDir>
#include <QLibraryInfo>
#include <cstdlib>
#include <cstring>
#include <string>

namespace skavlo {
namespace {

bool isSet(const char* variable) {
    const char* value = std::getenv(variable);
    return value && *value;
}

bool isXServerReachable() {
    if (!isSet("DISPLAY")) return false;
    xcb_connection_t* connection = xcb_connect(nullptr, nullptr);
    const bool reachable = xcb_connection_has_error(connection) == 0;
    xcb_disconnect(connection);
    return reachable;
}

bool accepts(const std::string& path) {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    if (path.size() >= sizeof address.sun_path) return false;
    std::memcpy(address.sun_path, path.c_str(), path.size());
    const int descriptor = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    if (descriptor < 0) return false;
    const bool accepted =
        connect(descriptor, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0;
    close(descriptor);
    return accepted;
}

bool hasWaylandPlugin() {
    const QDir plugins(QLibraryInfo::path(QLibraryInfo::PluginsPath) + "/platforms");
    return !plugins.entryList({QStringLiteral("libqwayland*.so")}, QDir::Files).isEmpty();
}

bool isWaylandReachable() {
    if (!isSet("WAYLAND_DISPLAY") || !hasWaylandPlugin()) return false;
    const std::string name = std::getenv("WAYLAND_DISPLAY");
    if (name.front() == '/') return accepts(name);
    return isSet("XDG_RUNTIME_DIR") &&
           accepts(std::string(std::getenv("XDG_RUNTIME_DIR")) + '/' + name);
}

}  // namespace

std::optional<const char*> reachablePlatform() {
    if (isSet("QT_QPA_PLATFORM")) {
        const char* named = std::getenv("QT_QPA_PLATFORM");
        if (std::strncmp(named, "xcb", 3) == 0 && !isXServerReachable()) return std::nullopt;
        if (std::strncmp(named, "wayland", 7) == 0 && !isWaylandReachable()) return std::nullopt;
        return named;
    }
    if (isWaylandReachable()) return "wayland";
    if (isXServerReachable()) return "xcb";
    return std::nullopt;
}

}  // namespace skavlo
