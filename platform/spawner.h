#pragma once

#include <optional>
#include <string>
#include <vector>

namespace skavlo {

// A child to start, with the caller's environment.
struct SpawnDescription {
    std::vector<std::string> arguments;  // the first is the program's path
    bool ownProcessGroup = false;
    bool asRoot = false;  // user 0 and group 0, where the system lets the caller do that
    bool operator==(const SpawnDescription&) const = default;
};

// Starts and reaps children. Calls may come from any thread.
class Spawner {
  public:
    virtual ~Spawner() = default;
    // The child's process id; none when it could not be started.
    virtual std::optional<int> posix_spawn(const SpawnDescription& description) = 0;
    // Waits for this child's end; the status word of the system call of this name, none when there
    // is no such child.
    virtual std::optional<int> waitpid(int pid) = 0;
    // One child of this spawner that has ended is reaped without waiting; false: there is none.
    virtual bool reapFinished() = 0;
};

}  // namespace skavlo
