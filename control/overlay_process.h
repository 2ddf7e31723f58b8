#pragma once

#include <string>

#include "platform/notifications.h"
#include "platform/spawner.h"

namespace skavlo {

// The overlay process as the settings application sees it: an executable to spawn in its other
// roles, and a notification to post. Everything here may block and belongs on the serial queue.
class OverlayProcess {
  public:
    // `executablePath`: of the running executable.
    OverlayProcess(Spawner& spawner, Notifications& notifications, std::string executablePath);

    // Runs the probe and waits for it: whether it ended with status 1. A probe that cannot be
    // started counts as no.
    [[nodiscard]] bool skv_isOverlayRunning();
    // Asks any running overlay to quit.
    void postExit();
    // Starts the overlay in a process group of its own and does not wait for it; a failure is
    // silent, because the next probe shows it.
    void spawnHud();
    // Reaps, without waiting, every child that has ended.
    void reapFinishedChildren();

  private:
    Spawner& spawner_;
    Notifications& notifications_;
    std::string executablePath_;
};

}  // namespace skavlo
