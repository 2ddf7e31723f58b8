#include "platform/linux/posix/unix_socket.h"

#include <sys/socket.h>
#include <sys/un.h>

#include <cstring>

namespace skavlo {

UniqueDescriptor connectToSocket(const std::string& path) {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    if (path.size() >= sizeof address.sun_path) return {};
    std::memcpy(address.sun_path, path.c_str(), path.size() + 1);
    UniqueDescriptor socket(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
    if (!socket ||
        ::connect(socket.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0) {
        return {};
    }
    return socket;
}

}  // namespace skavlo
