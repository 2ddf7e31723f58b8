// Child processes: described as data, started here, reaped here.
#pragma once

#include <sys/resource.h>
#include <sys/types.h>

#include <optional>
#include <string>
#include <vector>

#include "platform/linux/posix/unique_descriptor.h"
#include "platform/result.h"

namespace skavlo {

// The child sees the parent's open file `parent` as its descriptor `child`.
struct ChildDescriptor {
    int child;
    int parent;
};

// Real, effective and saved identity; the supplementary groups are cleared with it.
struct ChildIdentity {
    uid_t user;
    gid_t group;
};

// Soft and hard value of one RLIMIT_*.
struct ChildLimit {
    int resource;
    rlim_t value;
};

enum class ChildGroup { ofParent, own, ownSession };

// Nothing but what stands here reaches the child: its environment is exactly `environment`, every
// descriptor that is not named is closed (of 0, 1 and 2: /dev/null), no signal is blocked, ignored
// or handled.
struct ChildDescription {
    std::vector<std::string> arguments;    // the first is the program's path, not searched for
    std::vector<std::string> environment;  // NAME=value
    std::vector<ChildDescriptor> descriptors;
    std::optional<ChildIdentity> identity;  // none: that of the parent
    ChildGroup group = ChildGroup::ofParent;
    std::vector<ChildLimit> limits;
    // Sent to the child when the thread that started it ends; 0: none.
    int deathSignal = 0;
};

// How a child ended: by itself with a status, or by a signal.
struct ChildEnd {
    bool exited = false;
    int code = 0;  // exit status or signal number
    [[nodiscard]] bool success() const { return exited && code == 0; }
};

// A started child. Destroying the handle kills and reaps what still runs, which waits for the
// kernel to take it down; detach() leaves it alone.
class ChildProcess {
  public:
    ChildProcess(pid_t pid, UniqueDescriptor pidfd, bool leadsGroup);
    ChildProcess(ChildProcess&& other) noexcept;
    ChildProcess& operator=(ChildProcess&& other) noexcept;
    ~ChildProcess();

    [[nodiscard]] pid_t pid() const { return pid_; }
    // Readable once the child has ended.
    [[nodiscard]] int pidfd() const { return pidfd_.get(); }
    // SIGKILL to the child, and to its whole group when it leads one. Nothing once reaped.
    void kill();
    // None while it runs. The rest of a group it led is killed before its number becomes free.
    std::optional<ChildEnd> reap();
    void detach();

  private:
    std::optional<ChildEnd> wait(int options);

    pid_t pid_ = -1;  // -1: reaped, detached or moved from
    UniqueDescriptor pidfd_;
    bool leadsGroup_ = false;
};

// Returns when the child runs its program, or with the reason why it does not (the failed call and
// the system's message). Callable from any thread.
[[nodiscard]] Result<ChildProcess> spawnChild(const ChildDescription& description);

}  // namespace skavlo
