// Enters the sandbox, tries one thing named by its argument, and says on standard output how that
// went: "done", or the name of the error. Killed, it says nothing.
#include <errno.h>
#include <fcntl.h>
#include <pthread.h>
#include <signal.h>
#include <string.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/ptrace.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <functional>
#include <map>
#include <string>

#include "platform/linux/image/sandbox.h"

namespace {

// Its own file, which whoever runs the test may write to; /dev/null would be no harm.
std::string g_writable;

int openWith(int flags) {
    return open(g_writable.c_str(), flags, 0600);
}

int startThread() {
    pthread_t thread;
    const int error = pthread_create(
        &thread, nullptr, [](void*) -> void* { return nullptr; }, nullptr);
    if (error == 0) return pthread_join(thread, nullptr);
    errno = error;
    return -1;
}

int execTrue() {
    char program[] = "/bin/true";
    char* arguments[] = {program, nullptr};
    return execve(program, arguments, nullptr);
}

int limitOf(__rlimit_resource resource) {
    rlimit limit{};
    if (getrlimit(resource, &limit) != 0) return -1;
    std::printf("%llu ", static_cast<unsigned long long>(limit.rlim_cur));
    return 0;
}

int takeTwoGibibytes() {
    void* memory = mmap(nullptr, std::size_t{2} << 30, PROT_READ | PROT_WRITE,
                        MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
    return memory == MAP_FAILED ? -1 : 0;
}

int burn() {
    for (;;) getppid();
}

int printIdentity() {
    uid_t user[3];
    gid_t group[3];
    if (getresuid(&user[0], &user[1], &user[2]) != 0) return -1;
    if (getresgid(&group[0], &group[1], &group[2]) != 0) return -1;
    std::printf("%u %u %u %u %u %u %d ", user[0], user[1], user[2], group[0], group[1], group[2],
                getgroups(0, nullptr));
    return 0;
}

int printWrite() {
    std::fputs("written ", stdout);
    return 0;
}

const std::map<std::string, std::function<int()>> kDeeds{
    {"nothing", [] { return 0; }},
    {"identity", printIdentity},
    {"print", printWrite},
    {"thread", startThread},
    {"read", [] { return open("/etc/passwd", O_RDONLY | O_CLOEXEC); }},
    {"open-write", [] { return openWith(O_WRONLY); }},
    {"open-readwrite", [] { return openWith(O_RDWR); }},
    {"open-truncate", [] { return openWith(O_RDONLY | O_TRUNC); }},
    {"open-create", [] { return open((g_writable + ".new").c_str(), O_RDONLY | O_CREAT, 0600); }},
    {"open-temporary", [] { return open("/tmp", O_TMPFILE | O_WRONLY, 0600); }},
    {"unlink", [] { return unlink(g_writable.c_str()); }},
    {"rename", [] { return rename(g_writable.c_str(), (g_writable + ".moved").c_str()); }},
    {"mkdir", [] { return mkdir((g_writable + ".directory").c_str(), 0700); }},
    {"socket", [] { return socket(AF_INET, SOCK_STREAM, 0); }},
    {"unix-socket", [] { return socket(AF_UNIX, SOCK_DGRAM, 0); }},
    {"socketpair",
     [] {
         int ends[2];
         return socketpair(AF_UNIX, SOCK_STREAM, 0, ends);
     }},
    {"exec", execTrue},
    {"fork", [] { return static_cast<int>(syscall(SYS_fork)); }},
    {"clone", [] { return static_cast<int>(syscall(SYS_clone, SIGCHLD, 0, 0, 0, 0)); }},
    {"kill-parent", [] { return kill(getppid(), SIGTERM); }},
    {"tgkill-parent",
     [] { return static_cast<int>(syscall(SYS_tgkill, getppid(), getppid(), SIGTERM)); }},
    {"ptrace", [] { return static_cast<int>(ptrace(PTRACE_ATTACH, getppid(), nullptr, nullptr)); }},
    {"read-memory",
     [] { return static_cast<int>(syscall(SYS_process_vm_readv, getppid(), 0, 0, 0, 0, 0)); }},
    {"setuid", [] { return static_cast<int>(syscall(SYS_setresuid, 0, 0, 0)); }},
    {"raise-limit",
     [] {
         const rlimit limit{128, 128};
         return setrlimit(RLIMIT_NOFILE, &limit);
     }},
    {"dumpable", [] { return prctl(PR_SET_DUMPABLE, 1, 0, 0, 0); }},
    {"io-uring", [] { return static_cast<int>(syscall(SYS_io_uring_setup, 1, nullptr)); }},
    {"memory", takeTwoGibibytes},
    {"burn", burn},
    {"cpu-limit", [] { return limitOf(RLIMIT_CPU); }},
    {"file-limit", [] { return limitOf(RLIMIT_FSIZE); }},
    {"core-limit", [] { return limitOf(RLIMIT_CORE); }},
    {"descriptor-limit", [] { return limitOf(RLIMIT_NOFILE); }},
    {"abort", []() -> int { abort(); }},
};

}  // namespace

int main(int count, char** arguments) {
    if (count != 3) return 2;
    g_writable = arguments[2];
    const auto deed = kDeeds.find(arguments[1]);
    if (deed == kDeeds.end()) return 2;
    if (const auto error = skavlo::enterSandbox()) {
        std::fprintf(stderr, "%s\n", error->message.c_str());
        return 3;
    }
    const bool good = deed->second() >= 0;
    std::fputs(good ? "done" : strerrorname_np(errno), stdout);
    std::fflush(stdout);
    _exit(0);
}
