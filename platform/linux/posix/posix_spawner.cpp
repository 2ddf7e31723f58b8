#include "platform/linux/posix/posix_spawner.h"

#include <errno.h>
#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include "platform/linux/posix/child_process.h"

namespace skavlo {

namespace {

std::vector<std::string> ownEnvironment() {
    std::vector<std::string> variables;
    for (char** each = environ; each != nullptr && *each != nullptr; ++each)
        variables.emplace_back(*each);
    return variables;
}

// A descriptor that is closed here is no reason not to start; the child has /dev/null there.
std::vector<ChildDescriptor> ownOutputs() {
    std::vector<ChildDescriptor> descriptors;
    for (const int output : {STDOUT_FILENO, STDERR_FILENO})
        if (fcntl(output, F_GETFD) >= 0) descriptors.push_back({output, output});
    return descriptors;
}

// The one place that knows how a child becomes root. Who is root in effect makes the child root
// altogether; for anybody else a set-uid program would have to come before the arguments here.
void becomeRoot(ChildDescription& child) {
    if (geteuid() == 0) child.identity = ChildIdentity{0, 0};
}

// Of this child only: its end when `options` let it be waited for; 0 while it runs.
pid_t waitFor(pid_t pid, int& status, int options) {
    pid_t result;
    do {
        result = ::waitpid(pid, &status, options);
    } while (result < 0 && errno == EINTR);
    return result;
}

}  // namespace

std::optional<int> PosixSpawner::posix_spawn(const SpawnDescription& description) {
    ChildDescription plan;
    plan.arguments = description.arguments;
    plan.environment = ownEnvironment();
    plan.descriptors = ownOutputs();
    plan.group = description.ownProcessGroup ? ChildGroup::own : ChildGroup::ofParent;
    if (description.asRoot) becomeRoot(plan);
    auto child = spawnChild(plan);
    if (!child) return std::nullopt;
    const pid_t pid = child->pid();
    // Neither this object nor the process may take the child along.
    child->detach();
    const std::lock_guard lock(mutex_);
    children_.insert(pid);
    return pid;
}

std::optional<int> PosixSpawner::waitpid(int pid) {
    {
        // Whoever waits for a child has it for himself: its number is free once it was waited for.
        const std::lock_guard lock(mutex_);
        if (children_.erase(pid) == 0) return std::nullopt;
    }
    int status = 0;
    if (waitFor(pid, status, 0) < 0) return std::nullopt;
    return status;
}

bool PosixSpawner::reapFinished() {
    const std::lock_guard lock(mutex_);
    for (auto each = children_.begin(); each != children_.end();) {
        int status = 0;
        const pid_t result = waitFor(*each, status, WNOHANG);
        if (result == 0) {
            ++each;
            continue;
        }
        each = children_.erase(each);
        if (result > 0) return true;
    }
    return false;
}

}  // namespace skavlo
