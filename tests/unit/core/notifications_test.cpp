#include "platform/linux/notify/socket_notifications.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <filesystem>
#include <string>

#include "platform/linux/notify/socket_notification_poster.h"
#include "platform/linux/posix/posix_files.h"

namespace skavlo {
namespace {

namespace fs = std::filesystem;

class TemporaryDirectory {
  public:
    TemporaryDirectory() {
        std::string pattern = testing::TempDir() + "skavlo-XXXXXX";
        path_ = mkdtemp(pattern.data());
    }
    ~TemporaryDirectory() { fs::remove_all(path_); }
    TemporaryDirectory(const TemporaryDirectory&) = delete;
    TemporaryDirectory& operator=(const TemporaryDirectory&) = delete;
    [[nodiscard]] std::string file(const std::string& name) const { return path_ + "/" + name; }

  private:
    std::string path_;
};

class SocketNotificationsTest : public testing::Test {
  protected:
    // Long enough that a path to a socket would not fit into an address.
    std::string runDirectory() { return temporary.file(std::string(90, 'r')); }
    std::string notifyDirectory() { return runDirectory() + "/notify"; }
    std::size_t sockets() {
        return static_cast<std::size_t>(
            std::distance(fs::directory_iterator(notifyDirectory()), fs::directory_iterator()));
    }
    // Runs the loop until something has arrived or nothing can any more.
    void runUntil(const int& count, int wanted) {
        const auto timeout = loop.scheduledTimer(20, false, [this] { loop.stop(1); });
        while (count < wanted && loop.context().run_one() > 0) {
        }
    }

    TemporaryDirectory temporary;
    AsioRunLoop loop;
    SocketNotifications notifications{loop, runDirectory()};
    int received = 0;
};

TEST_F(SocketNotificationsTest, ReachEveryRegistrantOfTheName) {
    int other = 0;
    int second = 0;
    const auto a =
        notifications.notify_register_dispatch("com.oxbrel.skavlo.reload", [&] { ++received; });
    const auto b =
        notifications.notify_register_dispatch("com.oxbrel.skavlo.reload", [&] { ++second; });
    const auto c =
        notifications.notify_register_dispatch("com.oxbrel.skavlo.exit", [&] { ++other; });
    ASSERT_TRUE(a && b && c);
    notifications.notify_post("com.oxbrel.skavlo.reload");
    runUntil(received, 1);
    runUntil(second, 1);
    loop.context().poll();
    EXPECT_EQ(received, 1);
    EXPECT_EQ(second, 1);
    EXPECT_EQ(other, 0);
}

TEST_F(SocketNotificationsTest, AreDeliveredOncePerPost) {
    const auto registration = notifications.notify_register_dispatch("name", [&] { ++received; });
    for (int i = 0; i < 3; ++i) notifications.notify_post("name");
    runUntil(received, 3);
    loop.context().poll();
    EXPECT_EQ(received, 3);
}

TEST_F(SocketNotificationsTest, ComeFromAnotherProcess) {
    const auto registration = notifications.notify_register_dispatch("name", [&] { ++received; });
    const pid_t child = fork();
    if (child == 0) {
        postNotification(notifyDirectory(), "name");
        _exit(0);
    }
    runUntil(received, 1);
    EXPECT_EQ(received, 1);
    waitpid(child, nullptr, 0);
}

TEST_F(SocketNotificationsTest, APosterWithoutARunLoopReachesThem) {
    SocketNotificationPoster poster(runDirectory());
    const auto registration = notifications.notify_register_dispatch("name", [&] { ++received; });
    poster.notify_post("name");
    runUntil(received, 1);
    EXPECT_EQ(received, 1);
    EXPECT_EQ(poster.notify_register_dispatch("name", [&] { ++received; }), nullptr);
    EXPECT_EQ(sockets(), 1U);
    SocketNotificationPoster(temporary.file("missing")).notify_post("name");
}

TEST_F(SocketNotificationsTest, PostingToNobodyIsSilent) {
    notifications.notify_post("name");
    postNotification(temporary.file("missing"), "name");
    EXPECT_EQ(sockets(), 0U);
}

TEST_F(SocketNotificationsTest, AnEndedRegistrationLeavesNothingBehind) {
    auto registration = notifications.notify_register_dispatch("name", [&] { ++received; });
    EXPECT_EQ(sockets(), 1U);
    registration.reset();
    EXPECT_EQ(sockets(), 0U);
    notifications.notify_post("name");
    loop.context().poll();
    EXPECT_EQ(received, 0);
}

TEST_F(SocketNotificationsTest, AHandlerMayEndItsOwnRegistration) {
    std::unique_ptr<NotificationRegistration> registration;
    registration = notifications.notify_register_dispatch("name", [&] {
        ++received;
        registration.reset();
    });
    notifications.notify_post("name");
    notifications.notify_post("name");
    runUntil(received, 1);
    loop.context().poll();
    EXPECT_EQ(received, 1);
}

TEST_F(SocketNotificationsTest, TheSocketOfAKilledProcessIsTidiedUpByTheNextPost) {
    const pid_t child = fork();
    if (child == 0) {
        AsioRunLoop childLoop;
        SocketNotifications childNotifications(childLoop, runDirectory());
        const auto registration = childNotifications.notify_register_dispatch("name", [] {});
        _exit(0);
    }
    waitpid(child, nullptr, 0);
    EXPECT_EQ(sockets(), 1U);
    notifications.notify_post("name");
    EXPECT_EQ(sockets(), 0U);
}

TEST_F(SocketNotificationsTest, NobodyOutsideTheGroupMayRegisterOrPost) {
    struct stat status {};
    ASSERT_EQ(stat(notifyDirectory().c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 07777U, 02770U);
    const auto registration = notifications.notify_register_dispatch("name", [] {});
    for (const auto& entry : fs::directory_iterator(notifyDirectory())) {
        ASSERT_EQ(stat(entry.path().c_str(), &status), 0);
        EXPECT_EQ(status.st_mode & 07777U, 0660U);
    }
}

TEST_F(SocketNotificationsTest, ARefusedRegistrationIsSilent) {
    fs::remove_all(runDirectory());
    EXPECT_EQ(notifications.notify_register_dispatch("name", [] {}), nullptr);
}

// Two timers are due at once, and the first one parks the other, which is past cancelling by then.
TEST(AsioTimers, OneThatIsParkedWhileItIsDueStaysParked) {
    AsioRunLoop loop;
    std::unique_ptr<Timer> parked;
    int fired = 0;
    const auto first =
        loop.scheduledTimer(0.001, false, [&] { parked->setFireDate(FireDate::distantFuture); });
    parked = loop.scheduledTimer(0.0011, true, [&] { ++fired; });
    const auto due = std::chrono::steady_clock::now() + std::chrono::milliseconds(3);
    while (std::chrono::steady_clock::now() < due) {
    }
    const auto end = loop.scheduledTimer(0.01, false, [&] { loop.stop(0); });
    loop.run();
    EXPECT_EQ(fired, 0);
    parked->setFireDate(FireDate::now);
    loop.context().restart();
    const auto after = loop.scheduledTimer(20, false, [&] { loop.stop(1); });
    while (fired == 0 && loop.context().run_one() > 0) {
    }
    EXPECT_EQ(fired, 1);
}

class PosixFilesTest : public testing::Test {
  protected:
    TemporaryDirectory temporary;
    PosixFiles files;
    std::string path = temporary.file("file");
};

TEST_F(PosixFilesTest, WhatIsWrittenIsRead) {
    EXPECT_TRUE(files.writeAtomically(path, "contents"));
    EXPECT_EQ(files.read(path), "contents");
    EXPECT_TRUE(files.fileExistsAtPath(path));
    files.unlink(path);
    EXPECT_FALSE(files.read(path));
    EXPECT_FALSE(files.fileExistsAtPath(path));
}

TEST_F(PosixFilesTest, ARefusedWriteLeavesTheOldFileAndNoOther) {
    EXPECT_FALSE(files.writeAtomically(temporary.file("none/file"), "x"));
    fs::create_directory(path);
    fs::create_directory(path + "/inside");
    EXPECT_FALSE(files.writeAtomically(path, "x"));
    EXPECT_EQ(std::distance(fs::directory_iterator(temporary.file("")), fs::directory_iterator()),
              1);
}

TEST_F(PosixFilesTest, WhatIsNoRegularFileIsNotReadAndNotWaitedFor) {
    ASSERT_EQ(mkfifo(path.c_str(), 0600), 0);
    EXPECT_FALSE(files.read(path));
    EXPECT_FALSE(files.read(temporary.file("")));
    EXPECT_FALSE(files.read("/dev/zero"));
}

TEST_F(PosixFilesTest, OnlyWhatCanBeReadHasASize) {
    EXPECT_FALSE(files.sizeOf(path));
    files.writeAtomically(path, std::string(3 << 20, 'x'));
    EXPECT_EQ(files.sizeOf(path), 3U << 20);
    EXPECT_FALSE(files.sizeOf(temporary.file("")));
    fs::permissions(path, fs::perms::none);
    fs::permissions(temporary.file(""), fs::perms::all);
    const uid_t user = geteuid();
    constexpr uid_t kNobody = 65534;
    ASSERT_EQ(seteuid(user == 0 ? kNobody : user), 0);  // root may read everything
    const auto size = files.sizeOf(path);
    ASSERT_EQ(seteuid(user), 0);
    EXPECT_FALSE(size);
}

TEST_F(PosixFilesTest, TheVersionChangesWithTheContents) {
    EXPECT_EQ(files.versionOf(path), "");
    files.writeAtomically(path, "a");
    const std::string first = files.versionOf(path);
    EXPECT_EQ(files.versionOf(path), first);
    files.writeAtomically(path, "b");
    EXPECT_NE(files.versionOf(path), first);
}

TEST_F(PosixFilesTest, ALinkIsReplacedAndNeverFollowed) {
    const std::string target = temporary.file("target");
    files.writeAtomically(target, "precious");
    fs::create_symlink(target, path);
    files.writeAtomically(path, "new");
    EXPECT_EQ(files.read(target), "precious");
    EXPECT_EQ(files.read(path), "new");
}

TEST_F(PosixFilesTest, OwnershipOfALinksTargetIsNotGivenAway) {
    if (geteuid() != 0) GTEST_SKIP() << "only root can give files away";
    const std::string target = temporary.file("target");
    files.writeAtomically(target, "precious");
    struct stat status {};
    fs::create_symlink(target, path);
    files.chown(path, 501, 501);
    ASSERT_EQ(stat(target.c_str(), &status), 0);
    EXPECT_EQ(status.st_uid, 0U);
    fs::remove(path);
    fs::create_hard_link(target, path);
    files.chown(path, 501, 501);
    ASSERT_EQ(stat(target.c_str(), &status), 0);
    EXPECT_EQ(status.st_uid, 0U);
    fs::remove(path);
    files.chown(target, 501, 501);
    ASSERT_EQ(stat(target.c_str(), &status), 0);
    EXPECT_EQ(status.st_uid, 501U);
    EXPECT_EQ(status.st_gid, 501U);
}

}  // namespace
}  // namespace skavlo
