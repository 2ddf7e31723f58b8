#include "platform/linux/image/system_calls.h"

#include <errno.h>
#include <fcntl.h>
#include <sched.h>
#include <seccomp.h>
#include <string.h>
#include <sys/prctl.h>
#include <unistd.h>

#include <initializer_list>
#include <memory>
#include <string>

namespace skavlo {

namespace {

struct Release {
    void operator()(void* filter) const { seccomp_release(filter); }
};

// Collects rules; the first one refused is remembered.
class Filter {
  public:
    Filter() : context_(seccomp_init(SCMP_ACT_KILL_PROCESS)) {
        if (!context_) error_ = -ENOMEM;
    }

    void allow(std::initializer_list<int> calls) {
        for (const int call : calls) rule(SCMP_ACT_ALLOW, call, {});
    }
    void allow(int call, std::initializer_list<scmp_arg_cmp> when) {
        rule(SCMP_ACT_ALLOW, call, when);
    }
    void deny(int error, std::initializer_list<int> calls) {
        for (const int call : calls) rule(SCMP_ACT_ERRNO(static_cast<unsigned>(error)), call, {});
    }
    void deny(int error, int call, std::initializer_list<scmp_arg_cmp> when) {
        rule(SCMP_ACT_ERRNO(static_cast<unsigned>(error)), call, when);
    }
    [[nodiscard]] int load() { return error_ != 0 ? error_ : seccomp_load(context_.get()); }

  private:
    void rule(std::uint32_t action, int call, std::initializer_list<scmp_arg_cmp> when) {
        if (error_ != 0) return;
        error_ = seccomp_rule_add_array(context_.get(), action, call,
                                        static_cast<unsigned>(when.size()), when.begin());
    }

    std::unique_ptr<void, Release> context_;
    int error_ = 0;
};

void allowMemoryAndThreads(Filter& filter) {
    filter.allow({SCMP_SYS(brk), SCMP_SYS(mmap), SCMP_SYS(mprotect), SCMP_SYS(munmap),
                  SCMP_SYS(mremap), SCMP_SYS(madvise), SCMP_SYS(membarrier)});
    filter.allow({SCMP_SYS(futex), SCMP_SYS(set_robust_list), SCMP_SYS(rseq), SCMP_SYS(sched_yield),
                  SCMP_SYS(sched_getaffinity), SCMP_SYS(sched_getattr), SCMP_SYS(sched_getparam),
                  SCMP_SYS(sched_getscheduler), SCMP_SYS(gettid), SCMP_SYS(exit),
                  SCMP_SYS(exit_group), SCMP_SYS(restart_syscall)});
    filter.allow(SCMP_SYS(clone), {SCMP_A0(SCMP_CMP_MASKED_EQ, CLONE_THREAD, CLONE_THREAD)});
    // Its flags lie in memory, out of the filter's sight; the C library then takes the older call.
    filter.deny(ENOSYS, {SCMP_SYS(clone3)});
    // Asked by a library for machines with several memories, when it is loaded.
    filter.deny(ENOSYS, {SCMP_SYS(get_mempolicy), SCMP_SYS(set_mempolicy), SCMP_SYS(mbind),
                         SCMP_SYS(sched_setaffinity)});
    filter.allow(SCMP_SYS(prctl), {SCMP_A0(SCMP_CMP_EQ, PR_SET_NAME)});
    filter.deny(EINVAL, SCMP_SYS(prctl), {SCMP_A0(SCMP_CMP_NE, PR_SET_NAME)});
}

void allowSignals(Filter& filter) {
    filter.allow({SCMP_SYS(rt_sigaction), SCMP_SYS(rt_sigprocmask), SCMP_SYS(rt_sigreturn),
                  SCMP_SYS(sigaltstack)});
    // What abort() does.
    filter.allow(SCMP_SYS(tgkill), {SCMP_A0(SCMP_CMP_EQ, static_cast<scmp_datum_t>(getpid()))});
}

void allowQuestions(Filter& filter) {
    filter.allow({SCMP_SYS(getpid), SCMP_SYS(getppid), SCMP_SYS(getuid), SCMP_SYS(geteuid),
                  SCMP_SYS(getgid), SCMP_SYS(getegid), SCMP_SYS(getresuid), SCMP_SYS(getresgid),
                  SCMP_SYS(getgroups), SCMP_SYS(getrandom), SCMP_SYS(getrusage),
                  SCMP_SYS(getrlimit), SCMP_SYS(uname), SCMP_SYS(sysinfo)});
    filter.allow({SCMP_SYS(clock_gettime), SCMP_SYS(clock_getres), SCMP_SYS(clock_nanosleep),
                  SCMP_SYS(nanosleep), SCMP_SYS(gettimeofday), SCMP_SYS(time)});
    // Asking for a limit, not setting one.
    filter.allow(SCMP_SYS(prlimit64), {SCMP_A2(SCMP_CMP_EQ, 0)});
    filter.deny(EACCES, SCMP_SYS(prlimit64), {SCMP_A2(SCMP_CMP_NE, 0)});
}

// Flags at argument `at`. Opening for reading only is the one way that creates, cuts and writes
// nothing; font and type caches that a library would like to refresh stay as they are.
void allowReadOnlyOpen(Filter& filter, int call, unsigned at) {
    constexpr scmp_datum_t kTemporary = O_TMPFILE & ~O_DIRECTORY;
    constexpr scmp_datum_t kCreating = O_CREAT | O_TRUNC | O_APPEND | kTemporary;
    filter.allow(call, {SCMP_CMP(at, SCMP_CMP_MASKED_EQ, O_ACCMODE | kCreating, O_RDONLY)});
    for (const scmp_datum_t mode : {scmp_datum_t{O_WRONLY}, scmp_datum_t{O_RDWR}})
        filter.deny(EACCES, call, {SCMP_CMP(at, SCMP_CMP_MASKED_EQ, O_ACCMODE, mode)});
    for (const scmp_datum_t flag :
         {scmp_datum_t{O_CREAT}, scmp_datum_t{O_TRUNC}, scmp_datum_t{O_APPEND}, kTemporary})
        filter.deny(EACCES, call, {SCMP_CMP(at, SCMP_CMP_MASKED_EQ, flag, flag)});
}

void allowFiles(Filter& filter) {
    allowReadOnlyOpen(filter, SCMP_SYS(openat), 2);
    allowReadOnlyOpen(filter, SCMP_SYS(open), 1);
    filter.allow({SCMP_SYS(read), SCMP_SYS(readv), SCMP_SYS(pread64), SCMP_SYS(write),
                  SCMP_SYS(writev), SCMP_SYS(lseek), SCMP_SYS(close), SCMP_SYS(poll),
                  SCMP_SYS(ppoll), SCMP_SYS(fadvise64)});
    filter.allow({SCMP_SYS(fstat), SCMP_SYS(stat), SCMP_SYS(lstat), SCMP_SYS(newfstatat),
                  SCMP_SYS(statx), SCMP_SYS(statfs), SCMP_SYS(fstatfs), SCMP_SYS(access),
                  SCMP_SYS(faccessat), SCMP_SYS(faccessat2), SCMP_SYS(readlink),
                  SCMP_SYS(readlinkat), SCMP_SYS(getdents64), SCMP_SYS(getcwd)});
    for (const int command : {F_GETFD, F_SETFD, F_GETFL})
        filter.allow(SCMP_SYS(fcntl), {SCMP_A1(SCMP_CMP_EQ, static_cast<scmp_datum_t>(command))});
    filter.deny(EACCES, {SCMP_SYS(mkdir), SCMP_SYS(mkdirat), SCMP_SYS(unlink), SCMP_SYS(unlinkat),
                         SCMP_SYS(rename), SCMP_SYS(chmod), SCMP_SYS(fchmod), SCMP_SYS(link),
                         SCMP_SYS(utimensat), SCMP_SYS(inotify_init1), SCMP_SYS(eventfd2),
                         SCMP_SYS(ioctl), SCMP_SYS(memfd_create)});
    // Looking up the user's name tries a daemon first, and a warning of a decoder asks whether
    // standard error leads to the journal.
    filter.deny(EACCES, {SCMP_SYS(socket), SCMP_SYS(getpeername)});
}

}  // namespace

std::optional<Error> filterSystemCalls() {
    Filter filter;
    allowMemoryAndThreads(filter);
    allowSignals(filter);
    allowQuestions(filter);
    allowFiles(filter);
    if (const int error = filter.load(); error != 0)
        return Error{std::string("seccomp: ") + strerror(-error)};
    return std::nullopt;
}

}  // namespace skavlo
