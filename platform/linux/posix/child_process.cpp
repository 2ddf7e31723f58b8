#include "platform/linux/posix/child_process.h"

#include <errno.h>
#include <fcntl.h>
#include <signal.h>
#include <string.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <climits>
#include <utility>

namespace skavlo {

namespace {

// All that the child needs, laid out before it exists: between its birth and its program it shares
// the parent's memory, so it allocates nothing, takes no lock and makes plain system calls only.
struct Plan {
    const ChildDescription* description;
    std::vector<char*> arguments;
    std::vector<char*> environment;
    std::vector<ChildDescriptor> descriptors;  // ascending in `child`; `parent` is moved out of
                                               // the way of the targets by the child
    pid_t parent;
    // Written by the child, read by the parent once the child is gone.
    const char* volatile failedCall = nullptr;
    volatile int failedErrno = 0;
};

std::vector<char*> pointersTo(const std::vector<std::string>& strings) {
    std::vector<char*> pointers;
    pointers.reserve(strings.size() + 1);
    for (const std::string& string : strings) pointers.push_back(const_cast<char*>(string.c_str()));
    pointers.push_back(nullptr);
    return pointers;
}

[[noreturn]] void fail(Plan& plan, const char* call) {
    plan.failedErrno = errno;
    plan.failedCall = call;
    _exit(127);
}

void resetSignals() {
    struct sigaction standard {};
    standard.sa_handler = SIG_DFL;
    for (int signal = 1; signal < NSIG; ++signal) sigaction(signal, &standard, nullptr);
}

void leaveGroup(Plan& plan) {
    const ChildGroup group = plan.description->group;
    if (group == ChildGroup::own && setpgid(0, 0) != 0) fail(plan, "setpgid");
    if (group == ChildGroup::ownSession && setsid() < 0) fail(plan, "setsid");
}

void mapDescriptors(Plan& plan) {
    const int lowest = std::max(plan.descriptors.back().child + 1, 3);
    for (ChildDescriptor& each : plan.descriptors) {
        const int source = each.parent < 0 ? open("/dev/null", O_RDWR | O_CLOEXEC) : each.parent;
        each.parent = source < 0 ? -1 : fcntl(source, F_DUPFD_CLOEXEC, lowest);
        if (each.parent < 0) fail(plan, "fcntl");
    }
    unsigned firstUnused = 0;
    for (const ChildDescriptor& each : plan.descriptors) {
        if (dup2(each.parent, each.child) < 0) fail(plan, "dup2");
        const auto target = static_cast<unsigned>(each.child);
        if (target > firstUnused) close_range(firstUnused, target - 1, CLOSE_RANGE_CLOEXEC);
        firstUnused = target + 1;
    }
    if (close_range(firstUnused, UINT_MAX, CLOSE_RANGE_CLOEXEC) != 0) fail(plan, "close_range");
}

// The wrappers of the C library would change the identity of the parent's threads too, whose list
// they find in the shared memory.
void changeIdentity(Plan& plan) {
    if (!plan.description->identity) return;
    const auto [user, group] = *plan.description->identity;
    if (syscall(SYS_setgroups, 0, nullptr) != 0) fail(plan, "setgroups");
    if (syscall(SYS_setresgid, group, group, group) != 0) fail(plan, "setresgid");
    if (syscall(SYS_setresuid, user, user, user) != 0) fail(plan, "setresuid");
}

// After the change of identity, which disarms it.
void armDeathSignal(Plan& plan) {
    const int signal = plan.description->deathSignal;
    if (signal == 0) return;
    if (prctl(PR_SET_PDEATHSIG, signal) != 0) fail(plan, "prctl");
    if (getppid() != plan.parent) _exit(127);
}

[[noreturn]] void runChild(Plan& plan) {
    resetSignals();
    leaveGroup(plan);
    mapDescriptors(plan);
    for (const ChildLimit& each : plan.description->limits) {
        const rlimit limit{each.value, each.value};
        const auto resource = static_cast<__rlimit_resource>(each.resource);
        if (setrlimit(resource, &limit) != 0) fail(plan, "setrlimit");
    }
    changeIdentity(plan);
    armDeathSignal(plan);
    sigset_t none;
    sigemptyset(&none);
    sigprocmask(SIG_SETMASK, &none, nullptr);
    execve(plan.arguments[0], plan.arguments.data(), plan.environment.data());
    fail(plan, "execve");
}

// Shares memory with the child until it runs its program: no page tables to copy, and its errors
// are simply there. No signal handler of ours may run in the child meanwhile.
pid_t startChild(Plan& plan) {
    sigset_t all;
    sigset_t before;
    sigfillset(&all);
    pthread_sigmask(SIG_SETMASK, &all, &before);
    const pid_t pid = vfork();
    if (pid == 0) runChild(plan);
    const int error = errno;
    pthread_sigmask(SIG_SETMASK, &before, nullptr);
    errno = error;
    return pid;
}

Error systemError(const std::string& call, int error) {
    return Error{call + ": " + strerror(error)};
}

void takeAway(pid_t pid) {
    while (waitpid(pid, nullptr, 0) < 0 && errno == EINTR) {
    }
}

std::vector<ChildDescriptor> completeDescriptors(std::vector<ChildDescriptor> descriptors) {
    for (int standard = 0; standard < 3; ++standard) {
        const bool named =
            std::any_of(descriptors.begin(), descriptors.end(),
                        [standard](const ChildDescriptor& d) { return d.child == standard; });
        if (!named) descriptors.push_back({standard, -1});
    }
    std::sort(descriptors.begin(), descriptors.end(),
              [](const ChildDescriptor& a, const ChildDescriptor& b) { return a.child < b.child; });
    return descriptors;
}

}  // namespace

Result<ChildProcess> spawnChild(const ChildDescription& description) {
    if (description.arguments.empty()) return Error{"no program"};
    for (const ChildDescriptor& each : description.descriptors)
        if (each.child < 0 || each.parent < 0) return systemError("descriptor", EBADF);
    Plan plan{&description, pointersTo(description.arguments), pointersTo(description.environment),
              completeDescriptors(description.descriptors), getpid()};
    const pid_t pid = startChild(plan);
    if (pid < 0) return systemError("vfork", errno);
    if (plan.failedCall != nullptr) {
        takeAway(pid);
        return systemError(std::string(plan.failedCall) + " " + description.arguments[0],
                           plan.failedErrno);
    }
    // Not through the C library: its header of Debian 12 declares it without C linkage.
    UniqueDescriptor pidfd(static_cast<int>(syscall(SYS_pidfd_open, pid, 0)));
    if (!pidfd) {
        const int error = errno;
        ::kill(pid, SIGKILL);
        takeAway(pid);
        return systemError("pidfd_open", error);
    }
    return ChildProcess(pid, std::move(pidfd), description.group != ChildGroup::ofParent);
}

ChildProcess::ChildProcess(pid_t pid, UniqueDescriptor pidfd, bool leadsGroup)
    : pid_(pid), pidfd_(std::move(pidfd)), leadsGroup_(leadsGroup) {}

ChildProcess::ChildProcess(ChildProcess&& other) noexcept
    : pid_(std::exchange(other.pid_, -1)),
      pidfd_(std::move(other.pidfd_)),
      leadsGroup_(other.leadsGroup_) {}

ChildProcess& ChildProcess::operator=(ChildProcess&& other) noexcept {
    std::swap(pid_, other.pid_);
    std::swap(pidfd_, other.pidfd_);
    std::swap(leadsGroup_, other.leadsGroup_);
    return *this;
}

ChildProcess::~ChildProcess() {
    if (pid_ < 0) return;
    kill();
    wait(0);
}

void ChildProcess::kill() {
    if (pid_ < 0) return;
    // Not reaped yet, so the number cannot have passed on to another process or group.
    if (leadsGroup_) ::kill(-pid_, SIGKILL);
    ::kill(pid_, SIGKILL);
}

std::optional<ChildEnd> ChildProcess::reap() {
    if (pid_ < 0) return std::nullopt;
    if (leadsGroup_) {
        siginfo_t info{};
        const int result =
            waitid(P_PID, static_cast<id_t>(pid_), &info, WEXITED | WNOHANG | WNOWAIT);
        if (result == 0 && info.si_pid == 0) return std::nullopt;
        if (result == 0) ::kill(-pid_, SIGKILL);
    }
    return wait(WNOHANG);
}

void ChildProcess::detach() {
    pid_ = -1;
    pidfd_.reset();
}

std::optional<ChildEnd> ChildProcess::wait(int options) {
    int status = 0;
    pid_t result;
    do {
        result = waitpid(pid_, &status, options);
    } while (result < 0 && errno == EINTR);
    if (result == 0) return std::nullopt;
    pid_ = -1;
    pidfd_.reset();
    // Somebody ignores SIGCHLD: the child is gone and how it ended is not known.
    if (result < 0) return ChildEnd{false, 0};
    if (WIFEXITED(status)) return ChildEnd{true, WEXITSTATUS(status)};
    return ChildEnd{false, WTERMSIG(status)};
}

}  // namespace skavlo
