// What is left to the overlay once it runs.
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <filesystem>
#include <fstream>

#include "tests/e2e/rights/outsider.h"

namespace skavlo {
namespace {

namespace fs = std::filesystem;

// In a folder of root's that holds a file and a folder that belongs to somebody else.
class ConfinementTest : public testing::Test {
  protected:
    ConfinementTest() {
        std::string pattern = testing::TempDir() + "skavlo-confinement-XXXXXX";
        if (mkdtemp(pattern.data()) == nullptr) return;
        folder_ = pattern;
        chmod(folder_.c_str(), 0755);
        std::ofstream(folder_ / "mine") << "contents";
        fs::create_directory(folder_ / "theirs");
        std::ofstream(folder_ / "theirs/file") << "contents";
    }
    ~ConfinementTest() override { fs::remove_all(folder_); }
    ConfinementTest(const ConfinementTest&) = delete;
    ConfinementTest& operator=(const ConfinementTest&) = delete;

    [[nodiscard]] Outcome tryTo(const std::string& deed,
                                const char* inOlderThread = nullptr) const {
        return runAs(std::nullopt, [&] {
            if (chdir(folder_.c_str()) != 0) return 4;
            execl(SKAVLO_CONFINEMENT_PROBE, "probe", deed.c_str(), inOlderThread, nullptr);
            return 5;
        });
    }
    void expectDone(const std::string& deed) const {
        const Outcome outcome = tryTo(deed);
        EXPECT_EQ(outcome.said, "done") << deed;
        EXPECT_EQ(outcome.status, 0) << deed;
    }
    void expectDenied(const std::string& deed, const std::string& error = "EACCES") const {
        EXPECT_EQ(tryTo(deed).said, error) << deed;
    }
    void expectKilled(const std::string& deed) const {
        const Outcome outcome = tryTo(deed);
        EXPECT_EQ(outcome.said, "") << deed;
        EXPECT_TRUE(WIFSIGNALED(outcome.status)) << deed;
        EXPECT_EQ(WTERMSIG(outcome.status), SIGSYS) << deed;
    }
    static bool isRoot() { return geteuid() == 0; }

    fs::path folder_;
};

TEST_F(ConfinementTest, LeavesWhatTheOverlayDoes) {
    for (const char* deed :
         {"nothing", "thread", "read", "open-device", "memory", "unix-socket", "netlink", "unlink"})
        expectDone(deed);
    EXPECT_FALSE(fs::exists(folder_ / "mine"));
}

TEST_F(ConfinementTest, ReachesTheGroupsFolder) {
    if (!isRoot()) GTEST_SKIP() << "only root reaches what belongs to others";
    ASSERT_EQ(chown((folder_ / "theirs/file").c_str(), kOrdinaryUser, kMobile), 0);
    ASSERT_EQ(chmod((folder_ / "theirs/file").c_str(), 0600), 0);
    ASSERT_EQ(chown((folder_ / "theirs").c_str(), kMobile, kMobile), 0);
    ASSERT_EQ(chmod((folder_ / "theirs").c_str(), 0700), 0);
    expectDone("read-of-others");
    expectDone("unlink-of-others");
}

TEST_F(ConfinementTest, TheDrawingChildGetsItsIdentityAndCanBeEnded) {
    if (!isRoot()) GTEST_SKIP() << "only root can hand out identities";
    expectDone("child");
    expectDone("kill-child");
}

TEST_F(ConfinementTest, NoFileIsMadeOrChangesHands) {
    for (const char* deed : {"create", "truncate-open", "temporary", "mkdir", "rename", "link",
                             "symlink", "set-uid", "chown", "node"})
        expectDenied(deed);
    EXPECT_FALSE(fs::exists(folder_ / "new"));
    EXPECT_EQ(fs::file_size(folder_ / "mine"), 8U);
}

TEST_F(ConfinementTest, TheNetworkIsOutOfReach) {
    for (const char* deed : {"inet", "inet6", "packet"}) expectDenied(deed);
}

TEST_F(ConfinementTest, CallsWhoseArgumentsCannotBeSeenDoNotExist) {
    expectDenied("hidden-open", "ENOSYS");
}

TEST_F(ConfinementTest, OtherCapabilitiesAreGone) {
    if (!isRoot()) GTEST_SKIP() << "only root has capabilities to lose";
    expectDenied("nice");
    expectDone("bound");
}

TEST_F(ConfinementTest, ThreadsThatWereThereBeforeLoseTheSame) {
    EXPECT_EQ(tryTo("read-memory", "older").status & 0x7f, SIGSYS);
    EXPECT_EQ(tryTo("thread", "older").said, "done");
    if (!isRoot()) GTEST_SKIP() << "only root has capabilities to lose";
    EXPECT_EQ(tryTo("nice", "older").said, "EACCES");
    EXPECT_EQ(tryTo("bound", "older").said, "done");
}

TEST_F(ConfinementTest, AnAttackEndsTheProcess) {
    for (const char* deed : {"read-memory", "mount", "unmount", "chroot", "unshare", "namespace",
                             "module", "kexec", "bpf", "keys", "clock", "io-uring", "reboot"})
        expectKilled(deed);
#if !defined(__SANITIZE_ADDRESS__)
    expectKilled("ptrace");
#endif
}

}  // namespace
}  // namespace skavlo
