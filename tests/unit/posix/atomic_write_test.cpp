#include <errno.h>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sched.h>
#include <signal.h>
#include <string.h>
#include <sys/mount.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <filesystem>
#include <string>
#include <thread>

#include "platform/linux/posix/posix_files.h"
#include "platform/linux/posix/unique_descriptor.h"

namespace skavlo {

class AtomicWrite : public testing::Test {
  protected:
    AtomicWrite() : directory_(testing::TempDir() + "/skavlo-write-XXXXXX") {
        if (mkdtemp(directory_.data()) == nullptr) std::abort();
        path_ = directory_ + "/file";
    }
    ~AtomicWrite() override { std::filesystem::remove_all(directory_); }

    [[nodiscard]] int entries() const {
        const std::filesystem::directory_iterator all(directory_);
        return static_cast<int>(std::distance(begin(all), end(all)));
    }
    // What a child of ours that tries to replace small contents by large ones finds: 0 when the
    // old file stayed, whole and alone, and the attempt said that it failed.
    [[nodiscard]] int replaceInVain() const {
        PosixFiles files;
        if (!files.writeAtomically(path_, small_)) return 1;
        if (files.writeAtomically(path_, large_)) return 2;
        if (files.read(path_) != small_) return 3;
        return entries() == 1 ? 0 : 4;
    }

    std::string directory_;
    std::string path_;
    std::string small_ = "old";
    std::string large_ = std::string(std::size_t{1} << 20, 'n');
};

// The moments are spread over the time of about one write, which is the longest there is to hit.
TEST_F(AtomicWrite, AWriterKilledAtAnyMomentLeavesAWholeFile) {
    const std::string other(large_.size(), 'o');
    constexpr int kRounds = 200;
    int litter = 0;
    for (int round = 0; round < kRounds; ++round) {
        int ends[2];
        ASSERT_EQ(pipe2(ends, O_CLOEXEC), 0);
        const UniqueDescriptor readEnd(ends[0]);
        UniqueDescriptor writeEnd(ends[1]);
        const pid_t writer = fork();
        if (writer == 0) {
            PosixFiles files;
            for (bool begun = false;;) {
                files.writeAtomically(path_, large_);
                if (!begun && write(writeEnd.get(), "b", 1) != 1) _exit(1);
                begun = true;
                files.writeAtomically(path_, other);
            }
        }
        writeEnd.reset();
        char begun = 0;
        ASSERT_EQ(read(readEnd.get(), &begun, 1), 1);
        std::this_thread::sleep_for(std::chrono::microseconds(10 * round));
        kill(writer, SIGKILL);
        ASSERT_EQ(waitpid(writer, nullptr, 0), writer);
        const auto contents = PosixFiles().read(path_);
        ASSERT_TRUE(contents && (*contents == large_ || *contents == other)) << round;
        litter = entries() - 1;
        ASSERT_LE(litter, round + 1) << "a writer left more than the file it was at";
    }
    RecordProperty("temporary_files_left", litter);
}

TEST_F(AtomicWrite, AFullDiskLeavesTheOldFileAndNoOther) {
    if (geteuid() != 0) GTEST_SKIP() << "only root can mount a small file system to fill";
    constexpr int kNoMount = 77;
    const pid_t child = fork();
    if (child == 0) {
        // Seen by this process only, and gone with it.
        const bool mounted = unshare(CLONE_NEWNS) == 0 &&
                             mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0 &&
                             mount("none", directory_.c_str(), "tmpfs", 0, "size=256k") == 0;
        _exit(mounted ? replaceInVain() : kNoMount);
    }
    int status = 0;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    ASSERT_TRUE(WIFEXITED(status));
    if (WEXITSTATUS(status) == kNoMount) GTEST_SKIP() << "the system lets nothing be mounted here";
    EXPECT_EQ(WEXITSTATUS(status), 0);
}

TEST_F(AtomicWrite, ALimitOfFileSizeLeavesTheOldFileAndNoOther) {
    const pid_t child = fork();
    if (child == 0) {
        signal(SIGXFSZ, SIG_IGN);
        const rlimit limit{5000, 5000};
        if (setrlimit(RLIMIT_FSIZE, &limit) != 0) _exit(10);
        _exit(replaceInVain());
    }
    int status = 0;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    ASSERT_TRUE(WIFEXITED(status));
    EXPECT_EQ(WEXITSTATUS(status), 0);
}

// In the middle of the data, for certain: the signal comes with the byte beyond the limit.
TEST_F(AtomicWrite, AWriterKilledAmidItsDataLeavesTheOldFile) {
    PosixFiles files;
    ASSERT_TRUE(files.writeAtomically(path_, small_));
    const pid_t child = fork();
    if (child == 0) {
        const rlimit limit{5000, 5000};
        if (setrlimit(RLIMIT_FSIZE, &limit) != 0) _exit(10);
        files.writeAtomically(path_, large_);
        _exit(0);
    }
    int status = 0;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    ASSERT_TRUE(WIFSIGNALED(status));
    EXPECT_EQ(WTERMSIG(status), SIGXFSZ);
    EXPECT_EQ(files.read(path_), small_);
    EXPECT_EQ(entries(), 2) << "a killed writer leaves the one file it was at";
}

}  // namespace skavlo
