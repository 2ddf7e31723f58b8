#include "platform/linux/input/device_opener.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>

namespace skavlo {

int DirectDeviceOpener::open(const char* path, int flags) {
    int descriptor = ::open(path, flags | O_CLOEXEC | O_NONBLOCK | O_NOCTTY);
    const bool readable = errno == EACCES || errno == EPERM || errno == EROFS;
    if (descriptor < 0 && readable && (flags & O_ACCMODE) == O_RDWR)
        descriptor =
            ::open(path, (flags & ~O_ACCMODE) | O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY);
    return descriptor < 0 ? -errno : descriptor;
}

void DirectDeviceOpener::close(int descriptor) {
    ::close(descriptor);
}

}  // namespace skavlo
