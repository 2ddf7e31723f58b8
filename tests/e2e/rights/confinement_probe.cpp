// Gives up what the overlay gives up, tries one thing named by its first argument in the folder it
// is started in, and says on standard output how that went: "done", or the name of the error.
// Killed, it says nothing. With another argument a thread tries that was there before.
#include <errno.h>
#include <fcntl.h>
#include <linux/capability.h>
#include <sched.h>
#include <signal.h>
#include <string.h>
#include <sys/mman.h>
#include <sys/mount.h>
#include <sys/prctl.h>
#include <sys/ptrace.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <functional>
#include <future>
#include <map>
#include <optional>
#include <string>
#include <thread>

#include "platform/linux/confine/confinement.h"

namespace {

template <typename... Arguments>
int call(long number, Arguments... arguments) {
    return static_cast<int>(syscall(number, arguments...));
}

int startThread() {
    std::thread([] {}).join();
    return 0;
}

// As the drawing child is started: its status 0 when it could take its identity.
int startChildOfAnotherIdentity() {
    const pid_t child = fork();
    if (child == 0)
        _exit(setresgid(61017, 61017, 61017) == 0 && setresuid(61017, 61017, 61017) == 0 ? 0 : 1);
    int status = 0;
    return waitpid(child, &status, 0) == child && status == 0 ? 0 : -1;
}

int killChildOfAnotherIdentity() {
    const pid_t child = fork();
    if (child == 0) {
        if (setresuid(61017, 61017, 61017) != 0) _exit(1);
        raise(SIGSTOP);
        _exit(1);
    }
    int status = 0;
    if (waitpid(child, &status, WUNTRACED) != child || !WIFSTOPPED(status)) return -1;
    return kill(child, SIGKILL);
}

int bindLocally() {
    // Of no length: the kernel picks the name.
    sockaddr address{};
    address.sa_family = AF_UNIX;
    return bind(socket(AF_UNIX, SOCK_DGRAM, 0), &address, sizeof address.sa_family);
}

const std::map<std::string, std::function<int()>> kDeeds{
    {"nothing", [] { return 0; }},
    {"thread", startThread},
    {"read", [] { return open("mine", O_RDONLY); }},
    {"open-device", [] { return open("/dev/null", O_RDWR); }},
    {"unlink", [] { return unlink("mine"); }},
    {"unlink-of-others", [] { return unlink("theirs/file"); }},
    {"read-of-others", [] { return open("theirs/file", O_RDONLY); }},
    {"memory", [] { return memfd_create("test", MFD_CLOEXEC); }},
    {"unix-socket", bindLocally},
    {"netlink", [] { return socket(AF_NETLINK, SOCK_RAW, 15); }},
    {"child", startChildOfAnotherIdentity},
    {"kill-child", killChildOfAnotherIdentity},

    {"create", [] { return open("new", O_WRONLY | O_CREAT, 0600); }},
    {"truncate-open", [] { return open("mine", O_RDWR | O_TRUNC); }},
    {"temporary", [] { return open(".", O_TMPFILE | O_RDWR, 0600); }},
    {"mkdir", [] { return mkdir("new", 0700); }},
    {"rename", [] { return rename("mine", "new"); }},
    {"link", [] { return link("mine", "new"); }},
    {"symlink", [] { return symlink("mine", "new"); }},
    {"set-uid", [] { return chmod("mine", 04755); }},
    {"chown", [] { return chown("mine", 1, 1); }},
    {"node", [] { return mknod("new", S_IFIFO | 0600, 0); }},
    {"inet", [] { return socket(AF_INET, SOCK_STREAM, 0); }},
    {"inet6", [] { return socket(AF_INET6, SOCK_DGRAM, 0); }},
    {"packet", [] { return socket(AF_PACKET, SOCK_RAW, 0); }},
    {"hidden-open", [] { return call(SYS_openat2, AT_FDCWD, "mine", nullptr, 0); }},

    {"nice", [] { return setpriority(PRIO_PROCESS, 0, -20); }},
    {"bound", [] { return prctl(PR_CAPBSET_READ, CAP_SYS_ADMIN, 0, 0, 0) == 0 ? 0 : -1; }},

    {"ptrace", [] { return static_cast<int>(ptrace(PTRACE_ATTACH, getppid(), 0, 0)); }},
    {"read-memory", [] { return call(SYS_process_vm_readv, getppid(), 0, 0, 0, 0, 0); }},
    {"mount", [] { return mount("none", ".", "tmpfs", 0, ""); }},
    {"unmount", [] { return umount2(".", 0); }},
    {"chroot", [] { return chroot("."); }},
    {"unshare", [] { return unshare(CLONE_NEWNS); }},
    {"namespace", [] { return call(SYS_clone, CLONE_NEWNS | SIGCHLD, 0, 0, 0, 0); }},
    {"module", [] { return call(SYS_finit_module, -1, "", 0); }},
    {"kexec", [] { return call(SYS_kexec_load, 0, 0, 0, 0); }},
    {"bpf", [] { return call(SYS_bpf, 0, 0, 0); }},
    {"keys", [] { return call(SYS_keyctl, 0, 0, 0, 0, 0); }},
    {"clock", [] { return call(SYS_clock_settime, 0, nullptr); }},
    {"io-uring", [] { return call(SYS_io_uring_setup, 1, nullptr); }},
    {"reboot", [] { return call(SYS_reboot, 0, 0, 0, nullptr); }},
};

// Does the deed in a thread that is older than the loss of rights.
class OlderThread {
  public:
    explicit OlderThread(const std::function<int()>& deed)
        : thread_([this, deed] {
              may_.get_future().wait();
              result_ = deed();
              error_ = errno;
          }) {}
    int run() {
        may_.set_value();
        thread_.join();
        errno = error_;
        return result_;
    }

  private:
    std::promise<void> may_;
    int result_ = -1;
    int error_ = 0;
    std::thread thread_;
};

}  // namespace

int main(int count, char** arguments) {
    const auto deed = kDeeds.find(count > 1 ? arguments[1] : "");
    if (deed == kDeeds.end()) return 2;
    std::optional<OlderThread> older;
    if (count > 2) older.emplace(deed->second);
    if (const auto error = skavlo::giveUpRights()) {
        std::fprintf(stderr, "%s\n", error->message.c_str());
        return 3;
    }
    const bool good = (older ? older->run() : deed->second()) >= 0;
    std::fputs(good ? "done" : strerrorname_np(errno), stdout);
    std::fflush(stdout);
    _exit(0);
}
