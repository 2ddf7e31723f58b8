// Picks the role. Thin on purpose: the probe runs every two seconds and pays for whatever is linked
// here, so the long-lived roles live in modules beside the executable.
#include <dlfcn.h>
#include <unistd.h>

#include <climits>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

#include "app/role_entry.h"
#include "app/roles.h"
#include "platform/linux/posix/posix_files.h"
#include "platform/linux/posix/posix_process.h"

namespace {

constexpr int kModuleMissing = 127;

// The module lies beside the executable, wherever that is.
int runModule(const char* module, const char* entry, int argc, char** argv) {
    char self[PATH_MAX];
    const ssize_t length = readlink("/proc/self/exe", self, sizeof self - 1);
    if (length <= 0) return kModuleMissing;
    const std::string executable(self, static_cast<std::size_t>(length));
    const std::string path = executable.substr(0, executable.rfind('/') + 1) + module;
    void* handle = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL | RTLD_NODELETE);
    void* symbol = handle ? dlsym(handle, entry) : nullptr;
    if (!symbol) {
        std::fprintf(stderr, "skavlo: %s\n", dlerror());
        return kModuleMissing;
    }
    return reinterpret_cast<skavlo::RoleEntry*>(symbol)(argc, argv);
}

}  // namespace

int main(int argc, char** argv) {
    setenv("CI_USE_SOFTWARE_RENDERER", "1", 1);
    const char* role = argc < 2 ? "" : argv[1];
    if (std::strcmp(role, "-hud") == 0) {
        return runModule("skavlo-hud.so", skavlo::kHudEntry, argc, argv);
    }
    const skavlo::SettingsDirectory directory(SKAVLO_LIBRARY_PREFIX);
    skavlo::PosixFiles files;
    skavlo::PosixProcess process;
    if (std::strcmp(role, "-check") == 0) return skavlo::check(files, process, directory);
    if (std::strcmp(role, "-exit") == 0) return skavlo::exitOverlay(files, process, directory);
    return runModule("skavlo-ui.so", skavlo::kUiEntry, argc, argv);
}
