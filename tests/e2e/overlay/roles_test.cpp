// The short roles of the real executable on the real process-id file.
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <filesystem>
#include <string>

#include "tests/e2e/overlay/overlay_rig.h"

namespace skavlo {
namespace {

// A process that exists until it is killed or this object goes.
class Sleeper {
  public:
    Sleeper() : pid_(fork()) {
        if (pid_ == 0) {
            pause();
            _exit(0);
        }
    }
    ~Sleeper() {
        if (reaped_) return;
        kill(pid_, SIGKILL);
        waitpid(pid_, nullptr, 0);
    }
    Sleeper(const Sleeper&) = delete;
    Sleeper& operator=(const Sleeper&) = delete;
    [[nodiscard]] pid_t pid() const { return pid_; }
    // The status of waitpid(), when it was killed.
    int reap() {
        int status = 0;
        waitpid(pid_, &status, 0);
        reaped_ = true;
        return status;
    }
    [[nodiscard]] bool alive() const { return waitpid(pid_, nullptr, WNOHANG) == 0; }
    // The signal that ended it: this one, when it was not killed before.
    int endedBy(int signal) {
        kill(pid_, signal);
        return WTERMSIG(reap());
    }

  private:
    pid_t pid_;
    bool reaped_ = false;
};

class ExecutableRoles : public OverlayFiles {
  protected:
    static int statusOf(const std::string& role, const std::vector<std::string>& more = {}) {
        const int status = runSkavlo(role, {}, more);
        EXPECT_TRUE(WIFEXITED(status)) << "skavlo " << role << " was ended by a signal";
        return WEXITSTATUS(status);
    }
    static bool pidFileExists() { return std::filesystem::exists(pidFile()); }
};

TEST_F(ExecutableRoles, CheckSaysOneWhileTheNamedProcessExists) {
    Sleeper sleeper;
    write(pidFile(), std::to_string(sleeper.pid()));
    EXPECT_EQ(statusOf("-check"), 1);
    EXPECT_TRUE(sleeper.alive());
    EXPECT_TRUE(pidFileExists());
}

TEST_F(ExecutableRoles, CheckSaysZeroForAStaleId) {
    pid_t gone = 0;
    {
        Sleeper sleeper;
        gone = sleeper.pid();
    }
    write(pidFile(), std::to_string(gone));
    EXPECT_EQ(statusOf("-check"), 0);
}

TEST_F(ExecutableRoles, CheckSaysZeroWithoutAFile) {
    EXPECT_EQ(statusOf("-check"), 0);
}

TEST_F(ExecutableRoles, CheckSaysOneForZeroNothingAndText) {
    for (const char* contents : {"0", "", "abc"}) {
        write(pidFile(), contents);
        EXPECT_EQ(statusOf("-check"), 1) << '"' << contents << '"';
    }
}

TEST_F(ExecutableRoles, CheckProbesTheProcessGroupOfANegativeNumber) {
    Sleeper sleeper;
    setpgid(sleeper.pid(), sleeper.pid());
    write(pidFile(), "-" + std::to_string(sleeper.pid()));
    EXPECT_EQ(statusOf("-check"), 1);
    kill(sleeper.pid(), SIGKILL);
    sleeper.reap();
    EXPECT_EQ(statusOf("-check"), 0);
}

TEST_F(ExecutableRoles, CheckTakesTheLeadingNumber) {
    Sleeper sleeper;
    write(pidFile(), " " + std::to_string(sleeper.pid()) + "x");
    EXPECT_EQ(statusOf("-check"), 1);
}

TEST_F(ExecutableRoles, CheckSaysZeroForAHugeNumber) {
    write(pidFile(), "99999999999999999999");
    EXPECT_EQ(statusOf("-check"), 0);
}

TEST_F(ExecutableRoles, CheckSaysZeroForAFileThatCannotBeRead) {
    std::filesystem::create_directory(pidFile());
    EXPECT_EQ(statusOf("-check"), 0);
    std::filesystem::remove(pidFile());
    ASSERT_EQ(mkfifo(pidFile().c_str(), 0600), 0);
    EXPECT_EQ(statusOf("-check"), 0);
}

TEST_F(ExecutableRoles, CheckSaysZeroForAFileWithoutReadPermission) {
    if (geteuid() == 0) GTEST_SKIP() << "root may read every file";
    write(pidFile(), std::to_string(getpid()));
    ASSERT_EQ(chmod(pidFile().c_str(), 0), 0);
    EXPECT_EQ(statusOf("-check"), 0);
}

TEST_F(ExecutableRoles, ExitKillsTheNamedProcessAndRemovesTheFile) {
    Sleeper sleeper;
    write(pidFile(), std::to_string(sleeper.pid()));
    EXPECT_EQ(statusOf("-exit"), 0);
    const int status = sleeper.reap();
    EXPECT_TRUE(WIFSIGNALED(status));
    EXPECT_EQ(WTERMSIG(status), SIGKILL);
    EXPECT_FALSE(pidFileExists());
}

TEST_F(ExecutableRoles, ExitTakesTheLeadingNumber) {
    Sleeper sleeper;
    write(pidFile(), "  " + std::to_string(sleeper.pid()) + " x");
    EXPECT_EQ(statusOf("-exit"), 0);
    EXPECT_TRUE(WIFSIGNALED(sleeper.reap()));
}

TEST_F(ExecutableRoles, ExitOnlyRemovesAFileWithoutAPositiveNumber) {
    Sleeper sleeper;
    setpgid(sleeper.pid(), sleeper.pid());
    for (const std::string& contents : {std::string("0"), std::string(), std::string("abc"),
                                        "-" + std::to_string(sleeper.pid())}) {
        write(pidFile(), contents);
        EXPECT_EQ(statusOf("-exit"), 0) << contents;
        EXPECT_FALSE(pidFileExists()) << contents;
        EXPECT_TRUE(sleeper.alive()) << contents;
    }
}

TEST_F(ExecutableRoles, ExitRemovesTheFileOfAStaleOrHugeId) {
    for (const char* contents : {"2147483000", "99999999999999999999"}) {
        write(pidFile(), contents);
        EXPECT_EQ(statusOf("-exit"), 0);
        EXPECT_FALSE(pidFileExists());
    }
}

TEST_F(ExecutableRoles, ExitWithoutAFileDoesNothing) {
    EXPECT_EQ(statusOf("-exit"), 0);
}

TEST_F(ExecutableRoles, ExitLeavesAFileThatCannotBeRead) {
    std::filesystem::create_directory(pidFile());
    EXPECT_EQ(statusOf("-exit"), 0);
    EXPECT_TRUE(pidFileExists());
    std::filesystem::remove(pidFile());
}

// The settings application, which fails without a display and leaves file and process alone. With
// the id of nobody, as here for the likes of -check, that role would say 0.
TEST_F(ExecutableRoles, AnyOtherFirstArgumentIsTheSettingsApplication) {
    const auto fails = [](const char* role) {
        const int status = runSkavlo(role, {"DISPLAY", "WAYLAND_DISPLAY", "QT_QPA_PLATFORM"});
        return WIFEXITED(status) && WEXITSTATUS(status) == 1;
    };
    Sleeper sleeper;
    for (const char* role : {"", "-HUD", "-hud ", "-hudx", "--hud", "-EXIT", "x"}) {
        write(pidFile(), std::to_string(sleeper.pid()));
        EXPECT_TRUE(fails(role)) << role;
        EXPECT_TRUE(pidFileExists()) << role;
        EXPECT_TRUE(sleeper.alive()) << role;
    }
    write(pidFile(), "2147483000");
    ASSERT_EQ(statusOf("-check"), 0);
    for (const char* role : {"-Check", "-check1", "-check ", "check"}) {
        EXPECT_TRUE(fails(role)) << role;
    }
}

TEST_F(ExecutableRoles, HudWithoutAWindowServerRemovesItsFileAndFails) {
    const int status = runSkavlo("-hud", {"DISPLAY", "WAYLAND_DISPLAY"});
    ASSERT_TRUE(WIFEXITED(status));
    EXPECT_NE(WEXITSTATUS(status), 0);
    EXPECT_FALSE(pidFileExists());
}

TEST_F(ExecutableRoles, HudKillsThePreviousOverlayFirst) {
    Sleeper previous;
    write(pidFile(), std::to_string(previous.pid()));
    runSkavlo("-hud", {"DISPLAY", "WAYLAND_DISPLAY"});
    const int status = previous.reap();
    ASSERT_TRUE(WIFSIGNALED(status));
    EXPECT_EQ(WTERMSIG(status), SIGKILL);
}

// Whatever follows, be it a role.
TEST_F(ExecutableRoles, OnlyTheFirstArgumentIsLookedAt) {
    const std::vector<std::string> nowhere{"DISPLAY", "WAYLAND_DISPLAY", "QT_QPA_PLATFORM"};
    for (const char* role : {"-hud", "-exit"}) {
        Sleeper previous;
        write(pidFile(), std::to_string(previous.pid()));
        runSkavlo(role, nowhere, {"-check", "x"});
        EXPECT_EQ(previous.endedBy(SIGTERM), SIGKILL) << role;
        EXPECT_FALSE(pidFileExists()) << role;
    }
    Sleeper spared;
    write(pidFile(), std::to_string(spared.pid()));
    EXPECT_EQ(statusOf("-check", {"-exit"}), 1);
    for (const char* second : {"-hud", "-exit"}) {
        runSkavlo("x", nowhere, {second});
        EXPECT_TRUE(pidFileExists()) << second;
    }
    EXPECT_EQ(spared.endedBy(SIGTERM), SIGTERM);
    // Now the id is nobody's.
    EXPECT_EQ(statusOf("-check", {"x"}), 0);
    EXPECT_EQ(WEXITSTATUS(runSkavlo("x", nowhere, {"-check"})), 1);
}

// What the file may hold when an overlay starts. The process `other` lives, and leads a process
// group of its own.
struct PidFileCase {
    const char* name;
    std::string (*contents)(pid_t other);
    bool otherIsKilled = false;
};
void PrintTo(const PidFileCase& file, std::ostream* out) {
    *out << file.name;
}

class HudOnAPidFile : public OverlayRig {
  protected:
    HudOnAPidFile() { setpgid(other_.pid(), other_.pid()); }
    // The overlay would not come to show its window had it killed its own group.
    void expectStart() {
        ASSERT_NO_FATAL_FAILURE(startServer());
        ASSERT_NO_FATAL_FAILURE(launchOverlay());
        EXPECT_TRUE(overlay().running());
    }
    void expectOwnId() { EXPECT_EQ(contents(pidFile()), std::to_string(overlay().pid())); }

    Sleeper other_;
};

class HudOnContents : public HudOnAPidFile, public testing::WithParamInterface<PidFileCase> {};

TEST_P(HudOnContents, KillsWhomItNamesAloneAndWritesItsOwnId) {
    write(pidFile(), GetParam().contents(other_.pid()));
    ASSERT_NO_FATAL_FAILURE(expectStart());
    expectOwnId();
    EXPECT_EQ(other_.endedBy(SIGTERM), GetParam().otherIsKilled ? SIGKILL : SIGTERM);
}

INSTANTIATE_TEST_SUITE_P(
    Of, HudOnContents,
    testing::Values(
        PidFileCase{"Zero", [](pid_t) { return std::string("0"); }},
        PidFileCase{"Nothing", [](pid_t) { return std::string(); }},
        PidFileCase{"Text", [](pid_t) { return std::string("abc"); }},
        PidFileCase{"TextBeforeTheId", [](pid_t other) { return "x" + std::to_string(other); }},
        PidFileCase{"ANegativeNumber", [](pid_t other) { return "-" + std::to_string(other); }},
        PidFileCase{"TheIdWithinText",
                    [](pid_t other) { return " " + std::to_string(other) + "x"; }, true},
        PidFileCase{"AStaleId", [](pid_t) { return std::to_string(Sleeper().pid()); }},
        // Cut to 32 or 64 bits they would be that id.
        PidFileCase{"TheIdAnd32Bits",
                    [](pid_t other) {
                        return std::to_string((std::uint64_t{1} << 32U) + unsigned(other));
                    }},
        PidFileCase{"TheIdAnd64Bits",
                    [](pid_t other) {
                        // 2^64, whose last eight digits are 09551616.
                        return "184467440737" + std::to_string(109551616 + other).substr(1);
                    }},
        PidFileCase{"WhatIsNoUtf8", [](pid_t other) { return std::to_string(other) + "\xff"; }}),
    [](const auto& suite) { return std::string(suite.param.name); });

TEST_F(HudOnAPidFile, ReplacesAFileThatCannotBeRead) {
    std::filesystem::create_symlink(std::filesystem::path(pidFile()).filename(), pidFile());
    ASSERT_NO_FATAL_FAILURE(expectStart());
    expectOwnId();
}

TEST_F(HudOnAPidFile, ReplacesAPipeWithoutWaitingForAWriter) {
    ASSERT_EQ(mkfifo(pidFile().c_str(), 0600), 0);
    ASSERT_NO_FATAL_FAILURE(expectStart());
    expectOwnId();
}

TEST_F(HudOnAPidFile, StartsWhereItCannotWriteItsId) {
    std::filesystem::create_directory(pidFile());
    ASSERT_NO_FATAL_FAILURE(expectStart());
    EXPECT_TRUE(std::filesystem::is_directory(pidFile()));
}

}  // namespace
}  // namespace skavlo
