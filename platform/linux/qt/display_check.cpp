#include "platform/linux/qt/display_check.h"

#include <xcb/xcb.h>

#include <QDir>
#include <QLibraryInfo>
#include <cstdlib>
#include <cstring>
#include <string>

#include "platform/linux/posix/unix_socket.h"

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

bool hasWaylandPlugin() {
    const QDir plugins(QLibraryInfo::path(QLibraryInfo::PluginsPath) + "/platforms");
    return !plugins.entryList({QStringLiteral("libqwayland*.so")}, QDir::Files).isEmpty();
}

bool isWaylandReachable() {
    if (!isSet("WAYLAND_DISPLAY") || !hasWaylandPlugin()) return false;
    const std::string name = std::getenv("WAYLAND_DISPLAY");
    if (name.front() == '/') return bool(connectToSocket(name));
    return isSet("XDG_RUNTIME_DIR") &&
           connectToSocket(std::string(std::getenv("XDG_RUNTIME_DIR")) + '/' + name);
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
