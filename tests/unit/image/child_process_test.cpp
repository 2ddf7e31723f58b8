#include "platform/linux/posix/child_process.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>

#include "tests/unit/image/raster_fixture.h"

namespace skavlo {

namespace {

ChildDescription shell(const std::string& script) {
    ChildDescription description;
    description.arguments = {"/bin/sh", "-c", script};
    description.environment = {"PATH=/usr/bin:/bin"};
    return description;
}

// What the child writes to its descriptor 1.
std::string outputOf(ChildDescription description) {
    int ends[2];
    if (pipe2(ends, O_CLOEXEC) != 0) return "no pipe";
    UniqueDescriptor readEnd(ends[0]);
    UniqueDescriptor writeEnd(ends[1]);
    description.descriptors.push_back({1, writeEnd.get()});
    auto child = spawnChild(description);
    writeEnd.reset();
    if (!child) return child.error().message;
    std::string said;
    std::array<char, 4096> bytes;
    for (ssize_t count; (count = read(readEnd.get(), bytes.data(), bytes.size())) > 0;)
        said.append(bytes.data(), static_cast<std::size_t>(count));
    waitForEnd(*child);
    return said;
}

}  // namespace

TEST(ChildProcess, ReportsExitStatusAndSignal) {
    auto exited = spawnChild(shell("exit 7"));
    ASSERT_TRUE(exited);
    const ChildEnd status = waitForEnd(*exited);
    EXPECT_TRUE(status.exited);
    EXPECT_EQ(status.code, 7);
    EXPECT_FALSE(status.success());
    auto killed = spawnChild(shell("kill -TERM $$"));
    ASSERT_TRUE(killed);
    const ChildEnd signal = waitForEnd(*killed);
    EXPECT_FALSE(signal.exited);
    EXPECT_EQ(signal.code, SIGTERM);
}

TEST(ChildProcess, FailedStartComesBackWithItsReason) {
    ChildDescription missing;
    missing.arguments = {"/nonexistent/program"};
    auto child = spawnChild(missing);
    ASSERT_FALSE(child);
    EXPECT_EQ(child.error().message, "execve /nonexistent/program: No such file or directory");
    ChildDescription directory;
    directory.arguments = {"/tmp"};
    EXPECT_FALSE(spawnChild(directory));
    EXPECT_FALSE(spawnChild(ChildDescription{}));
    ChildDescription closed = shell("exit 0");
    closed.descriptors = {{5, 1000}};
    EXPECT_FALSE(spawnChild(closed));
    EXPECT_LT(waitpid(-1, nullptr, WNOHANG), 0) << "a failed start left a child behind";
}

TEST(ChildProcess, EnvironmentIsComplete) {
    ChildDescription description;
    description.arguments = {"/usr/bin/env"};
    description.environment = {"A=1", "B=two words"};
    EXPECT_EQ(outputOf(description), "A=1\nB=two words\n");
}

TEST(ChildProcess, OnlyNamedDescriptorsReachTheChild) {
    const UniqueDescriptor leak(open("/dev/zero", O_RDONLY));
    ASSERT_TRUE(leak);
    // The glob is expanded by the shell itself, whose own reading takes one descriptor more.
    EXPECT_EQ(outputOf(shell("for n in 3 4 5 6 7 8 9; do "
                             "[ -e /proc/$$/fd/$n ] && echo $n; done; readlink /proc/$$/fd/0")),
              "/dev/null\n");
}

// Each is the other's source: mapping them one after the other would lose one.
TEST(ChildProcess, DescriptorsMaySwapPlaces) {
    const UniqueDescriptor zero(open("/dev/zero", O_RDONLY | O_CLOEXEC));
    const UniqueDescriptor full(open("/dev/full", O_RDONLY | O_CLOEXEC));
    ChildDescription description = shell("readlink /proc/$$/fd/" + std::to_string(zero.get()) +
                                         " /proc/$$/fd/" + std::to_string(full.get()));
    description.descriptors = {{zero.get(), full.get()}, {full.get(), zero.get()}};
    EXPECT_EQ(outputOf(description), "/dev/full\n/dev/zero\n");
}

TEST(ChildProcess, SignalsAreAsForANewProcess) {
    signal(SIGUSR1, SIG_IGN);
    sigset_t blocked;
    sigemptyset(&blocked);
    sigaddset(&blocked, SIGUSR2);
    pthread_sigmask(SIG_BLOCK, &blocked, nullptr);
    const std::string status = outputOf(shell("grep -E '^Sig(Blk|Ign):' /proc/self/status"));
    sigset_t after;
    pthread_sigmask(SIG_UNBLOCK, &blocked, &after);
    signal(SIGUSR1, SIG_DFL);
    EXPECT_EQ(status, "SigBlk:\t0000000000000000\nSigIgn:\t0000000000000000\n");
    EXPECT_TRUE(sigismember(&after, SIGUSR2)) << "the parent's mask was not restored";
    EXPECT_FALSE(sigismember(&after, SIGTERM));
}

TEST(ChildProcess, IdentityIsChangedWithItsGroups) {
    if (!isRoot()) GTEST_SKIP() << "only root can start a child as somebody else";
    ChildDescription description = shell("grep -E '^(Uid|Gid|Groups):' /proc/self/status");
    description.identity = ChildIdentity{1234, 5678};
    EXPECT_EQ(outputOf(description),
              "Uid:\t1234\t1234\t1234\t1234\nGid:\t5678\t5678\t5678\t5678\nGroups:\t \n");
    EXPECT_EQ(geteuid(), 0U);
}

TEST(ChildProcess, LimitsAndSessionAreSet) {
    ChildDescription description = shell("ulimit -n; ps -o sid= -p $$ | tr -d ' '; echo $$");
    description.limits = {{RLIMIT_NOFILE, 33}};
    description.group = ChildGroup::ownSession;
    const std::string said = outputOf(description);
    ASSERT_EQ(said.rfind("33\n", 0), 0U) << said;
    const std::string rest = said.substr(3);
    const std::string session = rest.substr(0, rest.find('\n'));
    EXPECT_EQ(rest, session + "\n" + session + "\n");
}

TEST(ChildProcess, DestroyingTheHandleKillsTheGroupAndReaps) {
    int ends[2];
    ASSERT_EQ(pipe2(ends, O_CLOEXEC), 0);
    UniqueDescriptor readEnd(ends[0]);
    UniqueDescriptor writeEnd(ends[1]);
    ChildDescription description = shell("sleep 1000 & sleep 1000");
    description.group = ChildGroup::own;
    description.descriptors = {{1, writeEnd.get()}};
    pid_t pid = 0;
    {
        auto child = spawnChild(description);
        ASSERT_TRUE(child);
        pid = child->pid();
        EXPECT_FALSE(child->reap());
    }
    writeEnd.reset();
    EXPECT_LT(waitpid(pid, nullptr, WNOHANG), 0);
    // The end of the pipe: its last writer, the grandchild, is gone too.
    pollfd waiting{readEnd.get(), POLLIN, 0};
    EXPECT_EQ(poll(&waiting, 1, 60'000), 1);
    EXPECT_NE(waiting.revents & POLLHUP, 0);
}

// The middle process starts the child with a death signal and ends; the child's end of the pipe
// closes with it.
TEST(ChildProcess, DeathSignalFollowsTheParent) {
    int ends[2];
    ASSERT_EQ(pipe2(ends, O_CLOEXEC), 0);
    UniqueDescriptor readEnd(ends[0]);
    UniqueDescriptor writeEnd(ends[1]);
    const pid_t middle = fork();
    if (middle == 0) {
        ChildDescription description = shell("exec sleep 1000");
        description.descriptors = {{1, writeEnd.get()}};
        description.deathSignal = SIGKILL;
        auto child = spawnChild(description);
        if (child) child->detach();
        _exit(child ? 0 : 1);
    }
    writeEnd.reset();
    int status = 0;
    ASSERT_EQ(waitpid(middle, &status, 0), middle);
    EXPECT_EQ(status, 0);
    pollfd waiting{readEnd.get(), POLLIN, 0};
    EXPECT_EQ(poll(&waiting, 1, 60'000), 1);
    EXPECT_NE(waiting.revents & POLLHUP, 0);
}

}  // namespace skavlo
