#pragma once

#include <sys/types.h>

#include <mutex>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "platform/spawner.h"

namespace skavlo {

// An installation whose helper starts its executable as root, in the roles "-hud" and "-check".
struct PersonaInstallation {
    std::string executable;
    std::string helper;
};

// This build's, at its built-in paths, whether it is installed or not.
const PersonaInstallation& builtInInstallation();

// The command that does the same as this one, as root: the helper's, when it is installed, this
// user may run it, and the command is one that it runs. Else the command itself: a program that
// runs from elsewhere never starts the installed one.
std::vector<std::string> commandForRoot(const std::vector<std::string>& arguments,
                                        const PersonaInstallation& installation);

// Children that live on when the spawner or its process ends. They inherit the environment and what
// is open as standard output and error, and nothing else. No other child of the process is ever
// waited for.
class PosixSpawner final : public Spawner {
  public:
    explicit PosixSpawner(PersonaInstallation installation = builtInInstallation())
        : installation_(std::move(installation)) {}

    // Returns when the child runs its program. A child that is to be root becomes it directly when
    // the caller is root, else through the installation's helper, else it runs as the caller.
    std::optional<int> posix_spawn(const SpawnDescription& description) override;
    std::optional<int> waitpid(int pid) override;
    bool reapFinished() override;

  private:
    PersonaInstallation installation_;
    std::mutex mutex_;
    std::set<pid_t> children_;  // started here, and nobody waits for them
};

}  // namespace skavlo
