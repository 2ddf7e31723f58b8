#include "control/overlay_process.h"

#include <utility>

#include "settings/settings_directory.h"

namespace skavlo {

OverlayProcess::OverlayProcess(Spawner& spawner, Notifications& notifications,
                               std::string executablePath)
    : spawner_(spawner),
      notifications_(notifications),
      executablePath_(std::move(executablePath)) {}

bool OverlayProcess::skv_isOverlayRunning() {
    const auto probe = spawner_.posix_spawn(
        {.arguments = {executablePath_, "-check"}, .ownProcessGroup = false, .asRoot = true});
    if (!probe) return false;
    const auto status = spawner_.waitpid(*probe);
    // The second byte of the status word alone: the exit status.
    return status && (static_cast<unsigned>(*status) & 0xff00U) == 0x100U;
}

void OverlayProcess::postExit() {
    notifications_.notify_post(kExitNotification);
}

void OverlayProcess::spawnHud() {
    spawner_.posix_spawn(
        {.arguments = {executablePath_, "-hud"}, .ownProcessGroup = true, .asRoot = true});
}

void OverlayProcess::reapFinishedChildren() {
    while (spawner_.reapFinished()) {
    }
}

}  // namespace skavlo
