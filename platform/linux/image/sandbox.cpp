#include "platform/linux/image/sandbox.h"

#include <errno.h>
#include <fcntl.h>
#include <grp.h>
#include <sched.h>
#include <signal.h>
#include <string.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <unistd.h>

#include <algorithm>
#include <string>
#include <vector>

#include "platform/linux/image/system_calls.h"

namespace skavlo {

namespace {

struct Limit {
    __rlimit_resource resource;
    rlim_t value;
};

// The number of threads has no limit of its own (it would count all processes of a user who is not
// root): the system call filter keeps other processes from being made, and the address space
// bounds the threads.
std::vector<Limit> all(const SandboxLimits& limits) {
    return {
#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)  // which reserve terabytes
        {RLIMIT_AS, limits.addressSpaceBytes},
#endif
            {RLIMIT_CPU, limits.processorSeconds}, {RLIMIT_NOFILE, 64},
            {RLIMIT_FSIZE, 0},  // the answer goes through a pipe, which has no file size
            {RLIMIT_CORE, 0},
    };
}

Error systemError(const char* call) {
    return Error{std::string(call) + ": " + strerror(errno)};
}

// The parent may run ahead of everything and be spared when memory is short; this process must
// neither compete with it nor be spared instead of it.
std::optional<Error> standBack() {
    const sched_param none{};
    if (sched_setscheduler(0, SCHED_OTHER, &none) != 0) return systemError("scheduler");
    if (getpriority(PRIO_PROCESS, 0) < 0 && setpriority(PRIO_PROCESS, 0, 0) != 0)
        return systemError("priority");
    // Best effort: some system may have chosen a higher score, which cannot be lowered.
    const int score = open("/proc/self/oom_score_adj", O_WRONLY | O_CLOEXEC);
    [[maybe_unused]] const bool written = score >= 0 && write(score, "500", 3) == 3;
    if (score >= 0) close(score);
    return std::nullopt;
}

std::optional<Error> dropRoot() {
    if (getuid() != 0 && geteuid() != 0) return std::nullopt;
    if (setgroups(0, nullptr) != 0) return systemError("setgroups");
    if (setresgid(kSandboxUser, kSandboxUser, kSandboxUser) != 0) return systemError("setresgid");
    if (setresuid(kSandboxUser, kSandboxUser, kSandboxUser) != 0) return systemError("setresuid");
    return std::nullopt;
}

std::optional<Error> setLimits(const SandboxLimits& limits) {
    for (const Limit& each : all(limits)) {
        rlimit limit{};
        if (getrlimit(each.resource, &limit) != 0) return systemError("getrlimit");
        // An inherited limit that is lower stays.
        limit.rlim_max = std::min(limit.rlim_max, each.value);
        limit.rlim_cur = std::min(limit.rlim_cur, each.value);
        if (setrlimit(each.resource, &limit) != 0) return systemError("setrlimit");
    }
    return std::nullopt;
}

std::optional<Error> setProcessAttributes() {
    if (prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) != 0) return systemError("no new privileges");
    if (prctl(PR_SET_DUMPABLE, 0, 0, 0, 0) != 0) return systemError("dumpable");
    // The change of identity has disarmed what the parent set.
    if (prctl(PR_SET_PDEATHSIG, SIGKILL, 0, 0, 0) != 0) return systemError("death signal");
    return std::nullopt;
}

}  // namespace

std::optional<Error> enterSandbox(const SandboxLimits& limits) {
    if (auto error = standBack()) return error;
    if (auto error = setLimits(limits)) return error;
    for (const auto step : {dropRoot, setProcessAttributes, filterSystemCalls})
        if (auto error = step()) return error;
    return std::nullopt;
}

}  // namespace skavlo
