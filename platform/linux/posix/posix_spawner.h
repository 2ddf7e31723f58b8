#pragma once

#include <sys/types.h>

#include <mutex>
#include <set>

#include "platform/spawner.h"

namespace skavlo {

// Children that live on when the spawner or its process ends. They inherit the environment and what
// is open as standard output and error, and nothing else. No other child of the process is ever
// waited for.
class PosixSpawner final : public Spawner {
  public:
    // Returns when the child runs its program. A child that is to be root and cannot be, because
    // the caller is not, runs as the caller.
    std::optional<int> posix_spawn(const SpawnDescription& description) override;
    std::optional<int> waitpid(int pid) override;
    bool reapFinished() override;

  private:
    std::mutex mutex_;
    std::set<pid_t> children_;  // started here, and nobody waits for them
};

}  // namespace skavlo
