#include <csignal>

#include "app/pid_file.h"
#include "app/roles.h"

namespace skavlo {

int check(const Files& files, Process& process, const SettingsDirectory& directory) {
    const auto pid = readPidFile(files, directory.pidFile());
    return pid && process.kill(*pid, 0) == 0 ? 1 : 0;
}

int exitOverlay(Files& files, Process& process, const SettingsDirectory& directory) {
    const auto pid = readPidFile(files, directory.pidFile());
    if (!pid) return 0;
    if (*pid >= 1) process.kill(*pid, SIGKILL);
    files.unlink(directory.pidFile());
    return 0;
}

}  // namespace skavlo
