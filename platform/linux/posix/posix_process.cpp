#include "platform/linux/posix/posix_process.h"

#include <fcntl.h>
#include <signal.h>
#include <sys/resource.h>
#include <unistd.h>

#include "platform/linux/posix/unique_descriptor.h"

namespace skavlo {

int PosixProcess::kill(int pid, int signal) {
    return ::kill(pid, signal);
}

int PosixProcess::getpid() const {
    return ::getpid();
}

void PosixProcess::setpriority(int nice) {
    ::setpriority(PRIO_PROCESS, 0, nice);
}

void PosixProcess::memorystatus_control(int /*command*/, int /*pid*/, unsigned /*limit*/) {
    const UniqueDescriptor file(open("/proc/self/oom_score_adj", O_WRONLY | O_CLOEXEC));
    constexpr char kNeverKill[] = "-1000";
    if (!file || write(file.get(), kNeverKill, sizeof kNeverKill - 1) < 0) return;
}

}  // namespace skavlo
