// The overlay's module: puts the Linux platform under the overlay role.
#include <unistd.h>

#include <climits>
#include <exception>
#include <string>

#include "app/linux_overlay_system.h"
#include "app/role_entry.h"
#include "app/roles.h"

namespace {

std::string programBeside(const char* name) {
    char self[PATH_MAX];
    const ssize_t length = readlink("/proc/self/exe", self, sizeof self);
    const std::string path(self, length > 0 ? static_cast<std::size_t>(length) : 0);
    return path.substr(0, path.rfind('/') + 1) + name;
}

}  // namespace

extern "C" __attribute__((visibility("default"))) int skavlo_hud_main(int /*argc*/,
                                                                      char** /*argv*/) {
    constexpr int kFailed = 1;
    try {
        const skavlo::SettingsDirectory directory(SKAVLO_LIBRARY_PREFIX);
        skavlo::LinuxOverlaySystem system(directory, SKAVLO_RUN_DIRECTORY,
                                          programBeside("skavlo-raster"));
        return skavlo::hud(system, directory);
    } catch (const std::exception&) {
        return kFailed;
    }
}
