#include "platform/linux/confine/confinement.h"

#include <errno.h>
#include <fcntl.h>
#include <sched.h>
#include <string.h>
#include <sys/prctl.h>
#include <sys/socket.h>

#include <cstdint>
#include <string>

#include "platform/linux/confine/call_filter.h"
#include "platform/linux/confine/capabilities.h"

namespace skavlo {

namespace {

Error systemError(const char* call) {
    return Error{std::string(call) + ": " + strerror(errno)};
}

std::optional<Error> dropOtherCapabilities() {
    std::uint64_t kept = 0;
    for (const int each : kKeptCapabilities)
        kept |= std::uint64_t{1} << static_cast<unsigned>(each);
    return dropCapabilities(kept);
}

std::optional<Error> forgoNewRights() {
    if (prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) != 0) return systemError("no new privileges");
    return std::nullopt;
}

// Nothing in the overlay, its libraries or its child ever does these, so whoever tries has taken
// the process over.
void killOnAttack(CallFilter& filter) {
#if !defined(__SANITIZE_ADDRESS__)  // whose search for leaks stops the process's threads with it
    filter.kill({SCMP_SYS(ptrace)});
#endif
    // Into other processes.
    filter.kill({SCMP_SYS(process_vm_readv), SCMP_SYS(process_vm_writev), SCMP_SYS(process_madvise),
                 SCMP_SYS(pidfd_getfd), SCMP_SYS(kcmp), SCMP_SYS(perf_event_open),
                 SCMP_SYS(userfaultfd)});
    // Into the kernel and the machine.
    filter.kill({SCMP_SYS(init_module), SCMP_SYS(finit_module), SCMP_SYS(delete_module),
                 SCMP_SYS(kexec_load), SCMP_SYS(kexec_file_load), SCMP_SYS(bpf), SCMP_SYS(reboot),
                 SCMP_SYS(swapon), SCMP_SYS(swapoff), SCMP_SYS(acct), SCMP_SYS(quotactl),
                 SCMP_SYS(syslog), SCMP_SYS(sethostname), SCMP_SYS(setdomainname),
                 SCMP_SYS(settimeofday), SCMP_SYS(clock_settime), SCMP_SYS(iopl),
                 SCMP_SYS(ioperm)});
    // Other views of the file system, and files past their folders.
    filter.kill({SCMP_SYS(mount), SCMP_SYS(umount2), SCMP_SYS(pivot_root), SCMP_SYS(chroot),
                 SCMP_SYS(move_mount), SCMP_SYS(open_tree), SCMP_SYS(fsopen), SCMP_SYS(fsconfig),
                 SCMP_SYS(fsmount), SCMP_SYS(fspick), SCMP_SYS(mount_setattr), SCMP_SYS(setns),
                 SCMP_SYS(unshare), SCMP_SYS(open_by_handle_at)});
    for (const int space : {CLONE_NEWNS, CLONE_NEWUSER, CLONE_NEWPID, CLONE_NEWNET, CLONE_NEWIPC,
                            CLONE_NEWUTS, CLONE_NEWCGROUP}) {
        const auto bit = static_cast<scmp_datum_t>(space);
        filter.kill(SCMP_SYS(clone), {SCMP_A0(SCMP_CMP_MASKED_EQ, bit, bit)});
    }
    // Keys of other sessions; calls that no filter sees.
    filter.kill({SCMP_SYS(add_key), SCMP_SYS(request_key), SCMP_SYS(keyctl),
                 SCMP_SYS(io_uring_setup), SCMP_SYS(io_uring_enter), SCMP_SYS(io_uring_register)});
}

// Arguments that lie in memory are out of the filter's sight; libraries then take the older calls.
void hideCallsWithoutArguments(CallFilter& filter) {
    filter.deny(ENOSYS, {SCMP_SYS(clone3), SCMP_SYS(openat2)});
}

// Flags at argument `at`.
void denyCreating(CallFilter& filter, int call, unsigned at) {
    constexpr scmp_datum_t kTemporary = O_TMPFILE & ~O_DIRECTORY;
    for (const scmp_datum_t flag : {scmp_datum_t{O_CREAT}, scmp_datum_t{O_TRUNC}, kTemporary})
        filter.deny(EACCES, call, {SCMP_CMP(at, SCMP_CMP_MASKED_EQ, flag, flag)});
}

// Files are read, devices written to, memory shared without a name, and the process-id file and
// sockets removed; the one file that is written was written at the start. Refused and not killed
// for: libraries like to refresh a cache and can do without.
void denyNewFiles(CallFilter& filter) {
    denyCreating(filter, SCMP_SYS(openat), 2);
    denyCreating(filter, SCMP_SYS(open), 1);
    filter.deny(EACCES,
                {SCMP_SYS(creat),     SCMP_SYS(mkdir),     SCMP_SYS(mkdirat),  SCMP_SYS(mknod),
                 SCMP_SYS(mknodat),   SCMP_SYS(link),      SCMP_SYS(linkat),   SCMP_SYS(symlink),
                 SCMP_SYS(symlinkat), SCMP_SYS(rename),    SCMP_SYS(renameat), SCMP_SYS(renameat2),
                 SCMP_SYS(truncate),  SCMP_SYS(chmod),     SCMP_SYS(fchmod),   SCMP_SYS(fchmodat),
                 SCMP_SYS(chown),     SCMP_SYS(fchown),    SCMP_SYS(lchown),   SCMP_SYS(fchownat),
                 SCMP_SYS(setxattr),  SCMP_SYS(lsetxattr), SCMP_SYS(fsetxattr)});
}

// Displays, sessions and notifications are local, devices come and go through the kernel's socket.
// A display across the network is connected before this is in force.
void denyNetwork(CallFilter& filter) {
    const auto refuse = [&](scmp_compare comparison, int family) {
        filter.deny(EACCES, SCMP_SYS(socket),
                    {SCMP_A0(comparison, static_cast<scmp_datum_t>(family))});
    };
    refuse(SCMP_CMP_LT, AF_UNIX);
    for (int family = AF_UNIX + 1; family < AF_NETLINK; ++family) refuse(SCMP_CMP_EQ, family);
    refuse(SCMP_CMP_GT, AF_NETLINK);
    filter.deny(EACCES, {SCMP_SYS(listen)});
}

std::optional<Error> filterCalls() {
    CallFilter filter(SCMP_ACT_ALLOW);
    killOnAttack(filter);
    hideCallsWithoutArguments(filter);
    denyNewFiles(filter);
    denyNetwork(filter);
    return filter.load();
}

}  // namespace

std::optional<Error> giveUpRights() {
    for (const auto step : {dropOtherCapabilities, forgoNewRights, filterCalls})
        if (auto error = step()) return error;
    return std::nullopt;
}

}  // namespace skavlo
