#include "platform/linux/confine/capabilities.h"

#include <errno.h>
#include <linux/capability.h>
#include <semaphore.h>
#include <signal.h>
#include <string.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <time.h>
#include <unistd.h>

#include <atomic>
#include <charconv>
#include <filesystem>
#include <set>
#include <string>

namespace skavlo {

namespace {

// The kernel knows capabilities by the thread and lets each change its own only, and libraries
// start threads of their own: a signal makes them do it. What the handler needs lies here.
std::atomic<std::uint64_t> g_kept;
std::atomic<int> g_error;
sem_t g_answers;

void dropOfThisThread() {
    const std::uint64_t kept = g_kept;
    // The set from which programs that root runs get theirs. Who may not change it has none.
    for (unsigned each = 0; prctl(PR_CAPBSET_READ, each, 0, 0, 0) >= 0; ++each)
        if (((kept >> each) & 1U) == 0) prctl(PR_CAPBSET_DROP, each, 0, 0, 0);
    prctl(PR_CAP_AMBIENT, PR_CAP_AMBIENT_CLEAR_ALL, 0, 0, 0);
    __user_cap_header_struct header{_LINUX_CAPABILITY_VERSION_3, 0};
    __user_cap_data_struct sets[_LINUX_CAPABILITY_U32S_3] = {};
    if (syscall(SYS_capget, &header, sets) != 0) g_error = errno;
    for (unsigned half = 0; half < _LINUX_CAPABILITY_U32S_3; ++half) {
        sets[half].permitted &= static_cast<std::uint32_t>(kept >> (32 * half));
        sets[half].effective = sets[half].permitted;
        sets[half].inheritable = 0;
    }
    if (syscall(SYS_capset, &header, sets) != 0) g_error = errno;
}

void handle(int /*signal*/) {
    const int before = errno;
    dropOfThisThread();
    sem_post(&g_answers);
    errno = before;
}

std::set<pid_t> threads() {
    std::set<pid_t> result;
    for (const auto& entry : std::filesystem::directory_iterator("/proc/self/task")) {
        const std::string name = entry.path().filename();
        pid_t thread = 0;
        std::from_chars(name.data(), name.data() + name.size(), thread);
        result.insert(thread);
    }
    return result;
}

// False: it does not answer, because it blocks the signal.
bool dropOf(pid_t thread, int signal) {
    constexpr time_t kPatienceSeconds = 5;
    if (syscall(SYS_tgkill, getpid(), thread, signal) != 0) return errno == ESRCH;
    timespec until{};
    clock_gettime(CLOCK_MONOTONIC, &until);
    until.tv_sec += kPatienceSeconds;
    while (sem_clockwait(&g_answers, CLOCK_MONOTONIC, &until) != 0)
        if (errno != EINTR) return false;
    return true;
}

// Until no thread is left that has not answered: one of them may just have started another.
bool dropOfAll(int signal) {
    std::set<pid_t> done;
    bool found = true;
    while (found) {
        found = false;
        for (const pid_t thread : threads()) {
            if (!done.insert(thread).second) continue;
            found = true;
            if (!dropOf(thread, signal)) return false;
        }
    }
    return true;
}

}  // namespace

std::optional<Error> dropCapabilities(std::uint64_t kept) {
    g_kept = kept;
    g_error = 0;
    sem_init(&g_answers, 0, 0);
    struct sigaction action {};
    struct sigaction before {};
    action.sa_handler = handle;
    action.sa_flags = SA_RESTART;
    const int signal = SIGRTMIN;
    sigaction(signal, &action, &before);
    const bool reached = dropOfAll(signal);
    sigaction(signal, &before, nullptr);
    if (!reached) return Error{"capabilities: a thread does not answer"};
    if (g_error != 0) return Error{std::string("capabilities: ") + strerror(g_error)};
    return std::nullopt;
}

}  // namespace skavlo
