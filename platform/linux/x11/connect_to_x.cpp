#include "platform/linux/x11/connect_to_x.h"

#include <sys/stat.h>
#include <unistd.h>

namespace skavlo {

namespace {

constexpr uid_t kRoot = 0;

std::optional<uid_t> ownerOf(const std::string& path) {
    struct stat status {};
    if (stat(path.c_str(), &status) != 0 || status.st_uid == kRoot) return std::nullopt;
    return status.st_uid;
}

// Of ":1" or ":1.0"; empty for a display that is not on this machine.
std::string socketOf(const std::string& display) {
    if (!display.starts_with(':')) return {};
    return "/tmp/.X11-unix/X" + display.substr(1, display.find('.') - 1);
}

}  // namespace

std::optional<uid_t> sessionOwner(const char* runtimeDirectory, const char* display) {
    if (runtimeDirectory && *runtimeDirectory) {
        if (const auto owner = ownerOf(runtimeDirectory)) return owner;
    }
    const std::string socket = socketOf(display ? display : "");
    return socket.empty() ? std::nullopt : ownerOf(socket);
}

xcb_connection_t* connectToX(int* screenNumber) {
    xcb_connection_t* connection = xcb_connect(nullptr, screenNumber);
    if (xcb_connection_has_error(connection) == 0 || geteuid() != kRoot) return connection;
    const auto owner = sessionOwner(getenv("XDG_RUNTIME_DIR"), getenv("DISPLAY"));
    if (!owner || seteuid(*owner) != 0) return connection;
    xcb_disconnect(connection);
    connection = xcb_connect(nullptr, screenNumber);
    if (seteuid(kRoot) != 0) _exit(1);  // root is what the process started as
    return connection;
}

}  // namespace skavlo
