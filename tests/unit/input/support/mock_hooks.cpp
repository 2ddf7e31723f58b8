// Two things libinput asks that umockdev does not answer. In a test program the linker prefers
// these functions to the libraries'; other programs get them preloaded.
#include "tests/unit/input/support/mock_hooks.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <cstdlib>

namespace {

// A mocked device is a terminal; it passes for the device it stands for.
dev_t deviceBehind(dev_t terminal) {
    const char* at = std::getenv(skavlo::test::kTerminalsVariable);
    while (at && *at) {
        char* end = nullptr;
        const dev_t key = std::strtoull(at, &end, 10);
        const dev_t value = std::strtoull(end + 1, &end, 10);
        if (key == terminal) return value;
        at = end + 1;
    }
    return terminal;
}

}  // namespace

extern "C" {

// umockdev keeps no udev database, in which udev notes that it is done with a device.
__attribute__((visibility("default"))) int udev_device_get_is_initialized(struct udev_device*) {
    return 1;
}

__attribute__((visibility("default"))) int fstat64(int descriptor, struct stat64* result) noexcept {
    const int status = fstatat64(descriptor, "", result, AT_EMPTY_PATH);
    if (status == 0 && S_ISCHR(result->st_mode)) result->st_rdev = deviceBehind(result->st_rdev);
    return status;
}
}
