#include <fcntl.h>
#include <signal.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "platform/linux/image/sandbox.h"
#include "platform/linux/posix/child_process.h"
#include "tests/unit/image/picture_files.h"
#include "tests/unit/image/raster_fixture.h"

namespace skavlo {

namespace {

struct Outcome {
    std::string said;
    ChildEnd end;
};

// Reads to the end, then takes the child away.
Outcome runProbe(const std::string& deed, const std::string& writable,
                 std::vector<ChildLimit> limits = {}) {
    int ends[2];
    if (pipe(ends) != 0) return {};
    UniqueDescriptor readEnd(ends[0]);
    UniqueDescriptor writeEnd(ends[1]);
    ChildDescription description;
    description.arguments = {SKAVLO_SANDBOX_PROBE, deed, writable};
    description.descriptors = {{STDOUT_FILENO, writeEnd.get()}, {STDERR_FILENO, STDERR_FILENO}};
    description.limits = std::move(limits);
    auto child = spawnChild(description);
    writeEnd.reset();
    Outcome outcome;
    if (!child) return outcome;
    std::array<char, 256> bytes;
    for (ssize_t count; (count = read(readEnd.get(), bytes.data(), bytes.size())) > 0;)
        outcome.said.append(bytes.data(), static_cast<std::size_t>(count));
    outcome.end = waitForEnd(*child);
    return outcome;
}

}  // namespace

// In a directory and with a file that everybody may change, so that only the sandbox stands in the
// way.
class SandboxTest : public RasterTest {
  protected:
    SandboxTest() : writable_(writeFile("file", "contents")) {
        chmod(directory_.c_str(), 0777);
        chmod(writable_.c_str(), 0666);
    }
    void expectDenied(const std::string& deed, const std::string& error = "EACCES") const {
        const Outcome outcome = runProbe(deed, writable_);
        EXPECT_EQ(outcome.said, error);
        expectUntouched();
    }
    void expectKilled(const std::string& deed) const {
        const Outcome outcome = runProbe(deed, writable_);
        EXPECT_EQ(outcome.said, "");
        EXPECT_FALSE(outcome.end.exited);
        EXPECT_EQ(outcome.end.code, SIGSYS);
        expectUntouched();
    }
    void expectDone(const std::string& deed, const std::string& said = "") const {
        const Outcome outcome = runProbe(deed, writable_);
        EXPECT_EQ(outcome.said, said + "done");
        EXPECT_TRUE(outcome.end.success());
    }
    void expectUntouched() const {
        EXPECT_EQ(readFile(writable_), "contents");
        const std::filesystem::directory_iterator entries(directory_);
        EXPECT_EQ(std::distance(begin(entries), end(entries)), 1);
    }

    std::string writable_;
};

TEST_F(SandboxTest, LeavesWhatDecodingNeeds) {
    expectDone("nothing");
    expectDone("read");
    expectDone("print", "written ");
    expectDone("thread");
}

TEST_F(SandboxTest, IdentityOfRootIsDropped) {
    if (!isRoot()) GTEST_SKIP() << "only root has an identity to drop";
    const std::string id = std::to_string(kSandboxUser) + " ";
    expectDone("identity", id + id + id + id + id + id + "0 ");
}

// The real program, locked in and waiting for the first byte of an image.
class WaitingRaster {
  public:
    WaitingRaster() {
        int ends[2];
        if (pipe2(ends, O_CLOEXEC) != 0) return;
        readEnd_.reset(ends[0]);
        writeEnd_.reset(ends[1]);
        ChildDescription description;
        description.arguments = {SKAVLO_RASTER, "image", "64"};
        description.descriptors = {{STDIN_FILENO, readEnd_.get()}};
        auto child = spawnChild(description);
        if (!child) return;
        child_.emplace(std::move(*child));
        const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(60);
        while (!has("Seccomp:\t2") && std::chrono::steady_clock::now() < deadline)
            status_ = read("status");
    }
    [[nodiscard]] std::string read(const std::string& name) const {
        return readFile("/proc/" + std::to_string(pid()) + "/" + name);
    }
    [[nodiscard]] bool has(const std::string& line) const {
        return status_.find("\n" + line + "\n") != std::string::npos;
    }
    [[nodiscard]] pid_t pid() const { return child_ ? child_->pid() : 0; }

  private:
    UniqueDescriptor readEnd_;
    UniqueDescriptor writeEnd_;
    std::optional<ChildProcess> child_;
    std::string status_;
};

TEST_F(SandboxTest, ProgramIsLockedInBeforeItsInput) {
    const WaitingRaster raster;
    EXPECT_TRUE(raster.has("Seccomp:\t2"));
    EXPECT_TRUE(raster.has("NoNewPrivs:\t1"));
    EXPECT_TRUE(raster.has("CapPrm:\t0000000000000000"));
    const std::string user = std::to_string(isRoot() ? kSandboxUser : getuid());
    EXPECT_TRUE(raster.has("Uid:\t" + user + "\t" + user + "\t" + user + "\t" + user));
}

TEST_F(SandboxTest, PriorityAndMemoryProtectionAreNotInherited) {
    if (!isRoot()) GTEST_SKIP() << "only root can have a raised priority to hand down";
    const std::string score = readFile("/proc/self/oom_score_adj");
    std::ofstream("/proc/self/oom_score_adj") << -500;
    const bool raised = setpriority(PRIO_PROCESS, 0, -5) == 0;
    const WaitingRaster raster;
    const int priority = getpriority(PRIO_PROCESS, static_cast<id_t>(raster.pid()));
    const std::string childScore = raster.read("oom_score_adj");
    setpriority(PRIO_PROCESS, 0, 0);
    std::ofstream("/proc/self/oom_score_adj") << score;
    ASSERT_TRUE(raised);
    EXPECT_EQ(priority, 0);
    EXPECT_EQ(childScore, "500\n");
}

TEST_F(SandboxTest, OpenForWritingIsDenied) {
    expectDenied("open-write");
}
TEST_F(SandboxTest, OpenForReadingAndWritingIsDenied) {
    expectDenied("open-readwrite");
}
TEST_F(SandboxTest, TruncatingIsDenied) {
    expectDenied("open-truncate");
}
TEST_F(SandboxTest, CreatingIsDenied) {
    expectDenied("open-create");
}
TEST_F(SandboxTest, TemporaryFileIsDenied) {
    expectDenied("open-temporary");
}
TEST_F(SandboxTest, UnlinkIsDenied) {
    expectDenied("unlink");
}
TEST_F(SandboxTest, RenameIsDenied) {
    expectDenied("rename");
}
TEST_F(SandboxTest, MakingDirectoriesIsDenied) {
    expectDenied("mkdir");
}
TEST_F(SandboxTest, NetworkSocketIsDenied) {
    expectDenied("socket");
}
TEST_F(SandboxTest, LocalSocketIsDenied) {
    expectDenied("unix-socket");
}
TEST_F(SandboxTest, LimitsCannotBeRaised) {
    expectDenied("raise-limit");
}
TEST_F(SandboxTest, CannotBecomeDumpable) {
    expectDenied("dumpable", "EINVAL");
}
TEST_F(SandboxTest, SocketPairIsKilled) {
    expectKilled("socketpair");
}
TEST_F(SandboxTest, ExecIsKilled) {
    expectKilled("exec");
}
TEST_F(SandboxTest, ForkIsKilled) {
    expectKilled("fork");
}
TEST_F(SandboxTest, CloneOfAProcessIsKilled) {
    expectKilled("clone");
}
TEST_F(SandboxTest, KillOfTheParentIsKilled) {
    expectKilled("kill-parent");
}
TEST_F(SandboxTest, KillOfTheParentsThreadIsKilled) {
    expectKilled("tgkill-parent");
}
TEST_F(SandboxTest, PtraceIsKilled) {
    expectKilled("ptrace");
}
TEST_F(SandboxTest, ReadingForeignMemoryIsKilled) {
    expectKilled("read-memory");
}
TEST_F(SandboxTest, ChangeOfIdentityIsKilled) {
    expectKilled("setuid");
}
TEST_F(SandboxTest, RingOfSystemCallsIsKilled) {
    expectKilled("io-uring");
}

TEST_F(SandboxTest, MemoryIsLimited) {
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
    GTEST_SKIP() << "the sanitizer's shadow memory leaves no room for the limit";
#endif
    expectDenied("memory", "ENOMEM");
}

TEST_F(SandboxTest, OtherLimitsStand) {
    expectDone("cpu-limit", "10 ");
    expectDone("file-limit", "0 ");
    expectDone("core-limit", "0 ");
    expectDone("descriptor-limit", "64 ");
}

TEST_F(SandboxTest, ProcessorTimeIsLimited) {
    const Outcome outcome = runProbe("burn", writable_, {{RLIMIT_CPU, 1}});
    EXPECT_FALSE(outcome.end.exited);
    EXPECT_TRUE(outcome.end.code == SIGKILL || outcome.end.code == SIGXCPU) << outcome.end.code;
}

TEST_F(SandboxTest, AbortEndsAsAbort) {
    const Outcome outcome = runProbe("abort", writable_);
    EXPECT_FALSE(outcome.end.exited);
    EXPECT_EQ(outcome.end.code, SIGABRT);
}

}  // namespace skavlo
