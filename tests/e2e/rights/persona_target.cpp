// Stands where the installed executable would: says what reached it, one thing a line, and ends
// with a status of its own.
#include <dirent.h>
#include <signal.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/time.h>
#include <unistd.h>

#include <climits>
#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace {

void printIdentity() {
    uid_t user[3];
    gid_t group[3];
    if (getresuid(&user[0], &user[1], &user[2]) != 0) return;
    if (getresgid(&group[0], &group[1], &group[2]) != 0) return;
    std::printf("identity %u %u %u %u %u %u groups %d\n", user[0], user[1], user[2], group[0],
                group[1], group[2], getgroups(0, nullptr));
}

void printDescriptors() {
    DIR* open = opendir("/proc/self/fd");
    if (!open) return;
    while (const dirent* entry = readdir(open)) {
        const int number = std::atoi(entry->d_name);
        char target[PATH_MAX] = {};
        if (entry->d_name[0] == '.' || number == dirfd(open)) continue;
        if (readlinkat(dirfd(open), entry->d_name, target, sizeof target - 1) < 0) continue;
        // The C library itself puts the second one in the place of a closed standard input.
        const bool empty =
            std::strcmp(target, "/dev/null") == 0 || std::strcmp(target, "/dev/full") == 0;
        std::printf("descriptor %d%s\n", number, empty ? " empty" : "");
    }
    closedir(open);
}

void printSignals() {
    sigset_t blocked;
    sigprocmask(SIG_SETMASK, nullptr, &blocked);
    for (int number = 1; number < NSIG; ++number) {
        struct sigaction action {};
        const bool known = sigaction(number, nullptr, &action) == 0;
        if (known && action.sa_handler != SIG_DFL) std::printf("signal %d not default\n", number);
        if (sigismember(&blocked, number) == 1) std::printf("signal %d blocked\n", number);
    }
    itimerval timer{};
    getitimer(ITIMER_REAL, &timer);
    if (timer.it_value.tv_sec != 0) std::printf("timer\n");
}

void printLimit(const char* name, __rlimit_resource resource) {
    rlimit limit{};
    getrlimit(resource, &limit);
    std::printf("limit %s %lld\n", name, static_cast<long long>(limit.rlim_cur));
}

}  // namespace

int main(int argc, char** argv) {
    for (int i = 0; i < argc; ++i) std::printf("argument %s\n", argv[i]);
    for (char** each = environ; *each != nullptr; ++each) std::printf("variable %s\n", *each);
    printIdentity();
    printDescriptors();
    printSignals();
    printLimit("file", RLIMIT_FSIZE);
    printLimit("processor", RLIMIT_CPU);
    printLimit("core", RLIMIT_CORE);
    printLimit("descriptors", RLIMIT_NOFILE);
    char folder[PATH_MAX];
    std::printf("folder %s\n", getcwd(folder, sizeof folder));
    std::printf("mask %03o\n", static_cast<unsigned>(umask(0)));
    std::printf("process %d group %d\n", getpid(), getpgrp());
    constexpr int kOwnStatus = 7;
    return kOwnStatus;
}
