#include "tests/e2e/rights/outsider.h"

#include <fcntl.h>
#include <grp.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>

#include "platform/linux/posix/unique_descriptor.h"
#include "tools/rig/wait.h"

namespace skavlo {

namespace {

constexpr int kNoIdentity = 99;

bool become(Identity identity) {
    const auto [user, group] = identity;
    return setgroups(0, nullptr) == 0 && setresgid(group, group, group) == 0 &&
           setresuid(user, user, user) == 0;
}

int act(const std::optional<Identity>& identity, const std::function<int()>& deed) {
    if (identity && !become(*identity)) return kNoIdentity;
    return deed();
}

std::string readToEnd(int descriptor, const rig::Deadline& deadline) {
    std::string text;
    std::array<char, 4096> bytes;
    while (rig::waitReadable({descriptor}, deadline)) {
        const ssize_t count = read(descriptor, bytes.data(), bytes.size());
        if (count <= 0) return text;
        text.append(bytes.data(), static_cast<std::size_t>(count));
    }
    ADD_FAILURE() << "the child did not end";
    return text;
}

}  // namespace

bool canBecomeOthers() {
    if (geteuid() != 0) return false;
    const pid_t child = fork();
    if (child == 0) _exit(become({kOrdinaryUser, kMobile}) ? 0 : 1);
    int status = 1;
    return waitpid(child, &status, 0) == child && status == 0;
}

Outcome runAs(const std::optional<Identity>& identity, const std::function<int()>& deed) {
    std::array<int, 2> ends{};
    if (pipe2(ends.data(), O_CLOEXEC) != 0) return {};
    UniqueDescriptor readEnd(ends[0]);
    UniqueDescriptor writeEnd(ends[1]);
    Outcome outcome;
    outcome.pid = fork();
    if (outcome.pid == 0) {
        dup2(writeEnd.get(), STDOUT_FILENO);
        dup2(writeEnd.get(), STDERR_FILENO);
        _exit(act(identity, deed));
    }
    writeEnd.reset();
    const UniqueDescriptor end(static_cast<int>(syscall(SYS_pidfd_open, outcome.pid, 0)));
    const rig::Deadline deadline(std::chrono::seconds(20));
    outcome.said = readToEnd(readEnd.get(), deadline);
    if (!rig::waitReadable({end.get()}, deadline)) kill(outcome.pid, SIGKILL);
    waitpid(outcome.pid, &outcome.status, 0);
    EXPECT_FALSE(WIFEXITED(outcome.status) && WEXITSTATUS(outcome.status) == kNoIdentity);
    return outcome;
}

}  // namespace skavlo
