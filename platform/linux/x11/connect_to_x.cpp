#include "platform/linux/x11/connect_to_x.h"

#include <sys/stat.h>
#include <unistd.h>

namespace skavlo {

namespace {

constexpr uid_t kRoot = 0;

}  // namespace

std::optional<uid_t> sessionOwner(const char* runtimeDirectory) {
    struct stat status {};
    if (!runtimeDirectory || stat(runtimeDirectory, &status) != 0 || status.st_uid == kRoot) {
        return std::nullopt;
    }
    return status.st_uid;
}

xcb_connection_t* connectToX(int* screenNumber) {
    xcb_connection_t* connection = xcb_connect(nullptr, screenNumber);
    if (xcb_connection_has_error(connection) == 0 || geteuid() != kRoot) return connection;
    const auto owner = sessionOwner(getenv("XDG_RUNTIME_DIR"));
    if (!owner || seteuid(*owner) != 0) return connection;
    xcb_disconnect(connection);
    connection = xcb_connect(nullptr, screenNumber);
    if (seteuid(kRoot) != 0) _exit(1);  // root is what the process started as
    return connection;
}

}  // namespace skavlo
