#include "platform/linux/posix/posix_spawner.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <cstdlib>
#include <thread>
#include <vector>

#include "platform/linux/posix/system_wall_clock.h"
#include "platform/linux/posix/unique_descriptor.h"
#include "tests/unit/posix/leftovers.h"

namespace skavlo {
namespace {

SpawnDescription shell(const std::string& script) {
    return {.arguments = {"/bin/sh", "-c", script}};
}

// What the script says in the end: its exit status, -1 when it does not come to that.
int statusOf(PosixSpawner& spawner, const SpawnDescription& description) {
    const auto pid = spawner.posix_spawn(description);
    if (!pid) return -1;
    const auto status = spawner.waitpid(*pid);
    return status && WIFEXITED(*status) ? WEXITSTATUS(*status) : -1;
}

// In a process of its own, which may change what it likes.
int inChild(const std::function<int()>& body) {
    const pid_t pid = fork();
    if (pid == 0) _exit(body());
    int status = 0;
    return waitpid(pid, &status, 0) == pid && WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

constexpr uid_t kNobody = 65534;

}  // namespace

TEST(PosixSpawner, ReportsTheStatusWord) {
    PosixSpawner spawner;
    const auto exited = spawner.posix_spawn(shell("exit 1"));
    ASSERT_TRUE(exited);
    EXPECT_EQ(spawner.waitpid(*exited), 0x100);
    EXPECT_EQ(spawner.waitpid(*exited), std::nullopt);
    const auto killed = spawner.posix_spawn(shell("kill -KILL $$"));
    ASSERT_TRUE(killed);
    EXPECT_EQ(spawner.waitpid(*killed), SIGKILL);
}

TEST(PosixSpawner, AFailedStartIsNone) {
    PosixSpawner spawner;
    EXPECT_EQ(spawner.posix_spawn({.arguments = {"/nonexistent"}}), std::nullopt);
    EXPECT_EQ(spawner.posix_spawn({}), std::nullopt);
    EXPECT_FALSE(hasChildren());
}

TEST(PosixSpawner, TheEnvironmentIsTheCallers) {
    PosixSpawner spawner;
    setenv("SKAVLO_SPAWNER_TEST", "two words", 1);
    EXPECT_EQ(statusOf(spawner, shell("[ \"$SKAVLO_SPAWNER_TEST\" = 'two words' ]")), 0);
    unsetenv("SKAVLO_SPAWNER_TEST");
    EXPECT_EQ(statusOf(spawner, shell("[ -z \"${SKAVLO_SPAWNER_TEST+set}\" ]")), 0);
}

TEST(PosixSpawner, TheGroupIsItsOwnWhenAsked) {
    PosixSpawner spawner;
    SpawnDescription description = shell("[ $(ps -o pgid= -p $$) -eq $$ ]");
    EXPECT_EQ(statusOf(spawner, description), 1);
    description.ownProcessGroup = true;
    EXPECT_EQ(statusOf(spawner, description), 0);
}

TEST(PosixSpawner, NothingStrayReachesTheChild) {
    PosixSpawner spawner;
    const UniqueDescriptor stray(open("/dev/zero", O_RDONLY));
    ASSERT_TRUE(stray);
    signal(SIGUSR1, SIG_IGN);
    const int status =
        statusOf(spawner, shell("[ \"$(readlink /proc/$$/fd/0)\" = /dev/null ] || exit 3\n"
                                "for n in 3 4 5 6 7 8 9; do [ -e /proc/$$/fd/$n ] && exit 4; done\n"
                                "grep -qE '^SigIgn:.0*$' /proc/self/status || exit 5"));
    signal(SIGUSR1, SIG_DFL);
    EXPECT_EQ(status, 0);
}

TEST(PosixSpawner, WhatIsSaidGoesWhereTheCallersWordsGo) {
    int ends[2];
    ASSERT_EQ(pipe2(ends, O_CLOEXEC), 0);
    const UniqueDescriptor readEnd(ends[0]);
    const UniqueDescriptor writeEnd(ends[1]);
    EXPECT_EQ(inChild([&] {
                  dup2(writeEnd.get(), STDOUT_FILENO);
                  close(STDERR_FILENO);
                  PosixSpawner spawner;
                  return statusOf(spawner, shell("echo said; readlink /proc/$$/fd/2"));
              }),
              0);
    std::array<char, 64> bytes{};
    ASSERT_GT(read(readEnd.get(), bytes.data(), bytes.size() - 1), 0);
    EXPECT_STREQ(bytes.data(), "said\n/dev/null\n");
}

TEST(PosixSpawner, WhoIsRootInEffectMakesTheChildRootAltogether) {
    if (geteuid() != 0) GTEST_SKIP() << "only root can start a child as root";
    EXPECT_EQ(inChild([] {
                  if (setresgid(kNobody, kNobody, kNobody) != 0) return 10;
                  if (setresuid(kNobody, 0, kNobody) != 0) return 11;
                  PosixSpawner spawner;
                  SpawnDescription description = shell(
                      "grep -q '^Uid:.0.0.0.0$' /proc/self/status || exit 1\n"
                      "grep -q '^Gid:.0.0.0.0$' /proc/self/status || exit 2\n");
                  if (statusOf(spawner, description) != 1) return 12;
                  description.asRoot = true;
                  return statusOf(spawner, description);
              }),
              0);
}

TEST(PosixSpawner, WhoIsNotRootStartsTheChildAsItself) {
    EXPECT_EQ(inChild([] {
                  if (geteuid() == 0 && setresuid(kNobody, kNobody, kNobody) != 0) return 10;
                  PosixSpawner spawner;
                  SpawnDescription description =
                      shell("[ $(id -u) -eq " + std::to_string(getuid()) + " ]");
                  description.asRoot = true;
                  return statusOf(spawner, description);
              }),
              0);
}

TEST(PosixSpawner, TheHelperStandsBeforeWhatItRuns) {
    const PersonaInstallation installed{"/opt/skavlo", "/bin/true"};
    using Command = std::vector<std::string>;
    EXPECT_EQ(commandForRoot({"/opt/skavlo", "-hud"}, installed), (Command{"/bin/true", "-hud"}));
    EXPECT_EQ(commandForRoot({"/opt/skavlo", "-check"}, installed),
              (Command{"/bin/true", "-check"}));
    for (const Command& other :
         {Command{"/opt/skavlo", "-exit"}, Command{"/opt/skavlo"}, Command{"/build/skavlo", "-hud"},
          Command{"/opt/skavlo", "-hud", "-hud"}, Command{}})
        EXPECT_EQ(commandForRoot(other, installed), other);
}

TEST(PosixSpawner, WithoutAHelperToRunTheCommandStays) {
    const std::vector<std::string> command{"/opt/skavlo", "-hud"};
    EXPECT_EQ(commandForRoot(command, {"/opt/skavlo", "/nonexistent"}), command);
    EXPECT_EQ(commandForRoot(command, {"/opt/skavlo", "/etc/passwd"}), command);
}

TEST(PosixSpawner, WhoIsNotRootGoesThroughTheHelper) {
    if (geteuid() != 0) GTEST_SKIP() << "only root can take another identity";
    EXPECT_EQ(inChild([] {
                  if (setresuid(kNobody, kNobody, kNobody) != 0) return 1;
                  // One that always fails in the place of one that never does.
                  PosixSpawner spawner({"/bin/true", "/bin/false"});
                  SpawnDescription probe{.arguments = {"/bin/true", "-check"}, .asRoot = true};
                  if (statusOf(spawner, probe) != 1) return 2;
                  probe.asRoot = false;
                  return statusOf(spawner, probe) == 0 ? 0 : 3;
              }),
              0);
}

TEST(PosixSpawner, ChildrenOutliveTheSpawner) {
    std::optional<int> pid;
    {
        PosixSpawner spawner;
        pid = spawner.posix_spawn({.arguments = {"/bin/sleep", "1000"}, .ownProcessGroup = true});
    }
    ASSERT_TRUE(pid);
    int status = 0;
    EXPECT_EQ(waitpid(*pid, &status, WNOHANG), 0);
    ASSERT_EQ(kill(*pid, SIGTERM), 0);
    EXPECT_EQ(waitpid(*pid, &status, 0), *pid);
    EXPECT_EQ(WTERMSIG(status), SIGTERM) << "something else had ended it";
}

TEST(PosixSpawner, ChildrenOutliveTheProcess) {
    int ends[2];
    ASSERT_EQ(pipe2(ends, O_CLOEXEC), 0);
    const UniqueDescriptor readEnd(ends[0]);
    UniqueDescriptor writeEnd(ends[1]);
    EXPECT_EQ(inChild([&] {
                  dup2(writeEnd.get(), STDOUT_FILENO);
                  const std::string parent = std::to_string(getpid());
                  PosixSpawner spawner;
                  return spawner.posix_spawn(shell("while [ $(ps -o ppid= -p $$) -eq " + parent +
                                                   " ]; do sleep 0.01; done; echo alive"))
                             ? 0
                             : 1;
              }),
              0);
    writeEnd.reset();
    std::array<char, 64> bytes{};
    EXPECT_GT(read(readEnd.get(), bytes.data(), bytes.size() - 1), 0) << "the child is gone";
    EXPECT_STREQ(bytes.data(), "alive\n");
}

TEST(PosixSpawner, ReapsItsOwnChildrenOnly) {
    PosixSpawner spawner;
    const pid_t other = fork();
    if (other == 0) _exit(9);
    siginfo_t info{};
    ASSERT_EQ(waitid(P_PID, static_cast<id_t>(other), &info, WEXITED | WNOWAIT), 0);
    EXPECT_FALSE(spawner.reapFinished());
    EXPECT_EQ(spawner.waitpid(other), std::nullopt);
    const auto running = spawner.posix_spawn({.arguments = {"/bin/sleep", "1000"}});
    const auto ended = spawner.posix_spawn({.arguments = {"/bin/true"}});
    ASSERT_TRUE(running && ended);
    ASSERT_EQ(waitid(P_PID, static_cast<id_t>(*ended), &info, WEXITED | WNOWAIT), 0);
    EXPECT_TRUE(spawner.reapFinished());
    EXPECT_FALSE(spawner.reapFinished());
    kill(*running, SIGKILL);
    EXPECT_EQ(spawner.waitpid(*running), SIGKILL);
    int status = 0;
    EXPECT_EQ(waitpid(other, &status, 0), other);
    EXPECT_EQ(WEXITSTATUS(status), 9);
}

TEST(PosixSpawner, AThousandChildrenLeaveNothingBehind) {
    PosixSpawner spawner;
    const std::size_t before = openDescriptors();
    for (int i = 0; i < 1000; ++i)
        ASSERT_EQ(statusOf(spawner, {.arguments = {"/bin/true"}, .asRoot = true}), 0);
    EXPECT_EQ(openDescriptors(), before);
    EXPECT_FALSE(hasChildren());
}

// Every child is waited for once, by whichever thread comes first.
TEST(PosixSpawner, ThreadsShareIt) {
    PosixSpawner spawner;
    std::atomic<int> taken = 0;
    std::atomic<bool> over = false;
    std::thread reaper([&] {
        while (!over)
            if (spawner.reapFinished()) ++taken;
    });
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t)
        threads.emplace_back([&] {
            for (int i = 0; i < 50; ++i) {
                const auto pid = spawner.posix_spawn({.arguments = {"/bin/true"}});
                if (pid && spawner.waitpid(*pid)) ++taken;
            }
        });
    for (std::thread& each : threads) each.join();
    over = true;
    reaper.join();
    EXPECT_EQ(taken, 200);
    EXPECT_FALSE(hasChildren());
}

TEST(SystemWallClock, SaysTheTimeOfDay) {
    const auto before = static_cast<double>(time(nullptr));
    const double now = SystemWallClock().timeIntervalSince1970();
    EXPECT_GE(now, before);
    EXPECT_LE(now, static_cast<double>(time(nullptr)) + 1);
}

}  // namespace skavlo
