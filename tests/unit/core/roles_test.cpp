#include "app/roles.h"

#include <gmock/gmock.h>

#include <csignal>

#include "overlay_fixture.h"

namespace skavlo {
namespace {

using testing::ElementsAre;
using testing::ElementsAreArray;

class RecordingProcess final : public Process {
  public:
    explicit RecordingProcess(std::vector<std::string>& log) : log_(log) {}
    int kill(int pid, int signal) override {
        log_.push_back("kill " + std::to_string(pid) + ' ' + std::to_string(signal));
        return exists ? 0 : -1;
    }
    [[nodiscard]] int getpid() const override { return 4321; }
    void setpriority(int nice) override { log_.push_back("setpriority " + std::to_string(nice)); }
    void memorystatus_control(int command, int pid, unsigned limit) override {
        log_.push_back("memorystatus_control " + std::to_string(command) + ' ' +
                       std::to_string(pid) + ' ' + std::to_string(limit));
    }
    bool exists = true;

  private:
    std::vector<std::string>& log_;
};

class RecordingFiles final : public Files {
  public:
    explicit RecordingFiles(std::vector<std::string>& log) : log_(log) {}
    [[nodiscard]] std::optional<std::string> read(const std::string& path) const override {
        return files.read(path);
    }
    [[nodiscard]] std::optional<std::uint64_t> sizeOf(const std::string& path) const override {
        return files.sizeOf(path);
    }
    bool writeAtomically(const std::string& path, const std::string& contents) override {
        log_.push_back("write " + path + ' ' + contents);
        return files.writeAtomically(path, contents);
    }
    [[nodiscard]] bool fileExistsAtPath(const std::string& path) const override {
        return files.fileExistsAtPath(path);
    }
    [[nodiscard]] std::string versionOf(const std::string& path) const override {
        return files.versionOf(path);
    }
    void chown(const std::string& path, unsigned uid, unsigned gid) override {
        log_.push_back("chown " + path + ' ' + std::to_string(uid) + ' ' + std::to_string(gid));
    }
    void unlink(const std::string& path) override {
        log_.push_back("unlink " + path);
        files.unlink(path);
    }
    HeadlessFiles files;

  private:
    std::vector<std::string>& log_;
};

class RecordingSystem final : public OverlaySystem {
  public:
    RecordingSystem(Files& files, Process& process, std::vector<std::string>& log)
        : files_(files), process_(process), log_(log), hid(loop) {}
    ~RecordingSystem() override {
        g_skv_hidClient = nullptr;
        g_skv_hidRegistered = false;
    }
    RecordingSystem(const RecordingSystem&) = delete;
    RecordingSystem& operator=(const RecordingSystem&) = delete;

    [[nodiscard]] Files& files() override { return files_; }
    [[nodiscard]] Process& process() override { return process_; }
    [[nodiscard]] Notifications& notifications() override { return *this->center; }
    bool UIScreen_initialize() override { return note("UIScreen initialize", windowServer); }
    void CFRunLoopGetCurrent() override { note("CFRunLoopGetCurrent"); }
    void GSInitialize() override { note("GSInitialize"); }
    void BKSDisplayServicesStart() override { note("BKSDisplayServicesStart"); }
    void UIApplicationInitialize() override { note("UIApplicationInitialize"); }
    void UIApplicationInstantiateSingleton() override { note("UIApplicationInstantiateSingleton"); }
    void setNewDelegate() override { note("setNewDelegate"); }
    [[nodiscard]] bool respondsToAccessibilityInit() const override { return accessible; }
    void accessibilityInit() override { note("_accessibilityInit"); }
    HidEventSystemClient* IOHIDEventSystemClientCreate() override {
        note("IOHIDEventSystemClientCreate");
        return hidWorks ? &hid : nullptr;
    }
    void NSRunLoop_currentRunLoop() override {
        note(hid.scheduled() && hid.registered() ? "currentRunLoop, input scheduled and enabled"
                                                 : "currentRunLoop");
    }
    [[nodiscard]] std::optional<int> operatingSystemMajorVersion() const override { return major; }
    void GSEventInitialize(bool registerPurple) override {
        note(registerPurple ? "GSEventInitialize true" : "GSEventInitialize false");
    }
    void GSEventPushRunLoopMode() override { note("GSEventPushRunLoopMode"); }
    void completeAndRunAsPlugin() override { note("__completeAndRunAsPlugin"); }
    int CFRunLoopRun() override {
        note("CFRunLoopRun");
        if (whileRunning) whileRunning();
        return status;
    }
    void exit(int exitStatus) override {
        note("exit " + std::to_string(exitStatus));
        status = exitStatus;
    }

    bool note(const std::string& what, bool result = true) {
        log_.push_back(what);
        return result;
    }

  private:
    Files& files_;
    Process& process_;
    std::vector<std::string>& log_;

  public:
    HeadlessRunLoop loop;
    HeadlessHidClient hid;
    class LoggedNotifications final : public Notifications {
      public:
        LoggedNotifications(RunLoop& loop, std::vector<std::string>& log)
            : inner(loop), log_(log) {}
        void notify_post(const std::string& name) override { inner.notify_post(name); }
        [[nodiscard]] std::unique_ptr<NotificationRegistration> notify_register_dispatch(
            const std::string& name, std::function<void()> handler) override {
            log_.push_back("notify_register_dispatch " + name);
            return inner.notify_register_dispatch(name, std::move(handler));
        }
        HeadlessNotifications inner;

      private:
        std::vector<std::string>& log_;
    };
    std::unique_ptr<LoggedNotifications> center = std::make_unique<LoggedNotifications>(loop, log_);
    bool windowServer = true;
    bool accessible = false;
    bool hidWorks = true;
    std::optional<int> major = 17;
    int status = 0;
    std::function<void()> whileRunning;
};

class Roles : public testing::Test {
  protected:
    std::vector<std::string> log;
    RecordingFiles files{log};
    RecordingProcess process{log};
    SettingsDirectory directory{"/p/"};
    std::string pidFile = "/p/Caches/com.oxbrel.skavlo.pid";
    RecordingSystem system{files, process, log};
};

TEST_F(Roles, TheOverlayStartsInExactlyThisOrder) {
    files.files.writeAtomically(pidFile, "99");
    EXPECT_EQ(hud(system, directory), 0);
    EXPECT_THAT(
        log, ElementsAre("kill 99 9", "write " + pidFile + " 4321", "chown " + pidFile + " 501 501",
                         "notify_register_dispatch com.oxbrel.skavlo.exit", "setpriority -20",
                         "memorystatus_control 5 4321 18", "UIScreen initialize",
                         "CFRunLoopGetCurrent", "GSInitialize", "BKSDisplayServicesStart",
                         "UIApplicationInitialize", "UIApplicationInstantiateSingleton",
                         "setNewDelegate", "IOHIDEventSystemClientCreate",
                         "currentRunLoop, input scheduled and enabled", "GSEventInitialize false",
                         "GSEventPushRunLoopMode", "__completeAndRunAsPlugin", "CFRunLoopRun"));
}

TEST_F(Roles, AccessibilityIsInitialisedRightAfterTheDelegateWhereItExists) {
    system.accessible = true;
    hud(system, directory);
    const auto delegate = std::find(log.begin(), log.end(), "setNewDelegate");
    ASSERT_NE(delegate, log.end());
    EXPECT_EQ(*(delegate + 1), "_accessibilityInit");
}

TEST_F(Roles, WithoutAnInputClientTheOverlayStartsAllTheSame) {
    system.hidWorks = false;
    hud(system, directory);
    EXPECT_NE(std::find(log.begin(), log.end(), "currentRunLoop"), log.end());
    EXPECT_EQ(log.back(), "CFRunLoopRun");
}

TEST_F(Roles, EventsAreInitialisedFromMajorVersionFifteenOn) {
    for (const std::optional<int> major : {std::optional(14), std::optional<int>()}) {
        log.clear();
        system.major = major;
        hud(system, directory);
        EXPECT_EQ(std::count(log.begin(), log.end(), "GSEventInitialize false"), 0);
        EXPECT_EQ(std::count(log.begin(), log.end(), "GSEventPushRunLoopMode"), 0);
    }
    for (const int major : {15, 16, 17}) {
        log.clear();
        system.major = major;
        hud(system, directory);
        const auto plugin = std::find(log.begin(), log.end(), "__completeAndRunAsPlugin");
        ASSERT_NE(plugin, log.end());
        EXPECT_EQ(std::count(log.begin(), log.end(), "GSEventInitialize false"), 1);
        EXPECT_EQ(*(plugin - 2), "GSEventInitialize false");
        EXPECT_EQ(*(plugin - 1), "GSEventPushRunLoopMode");
    }
}

TEST_F(Roles, TheExitNotificationRemovesThePidFileAndEndsWithStatusZero) {
    system.status = 5;
    system.whileRunning = [&] {
        system.center->notify_post("com.oxbrel.skavlo.exit");
        EXPECT_EQ(log.back(), "CFRunLoopRun");
        system.loop.runPosted();
    };
    EXPECT_EQ(hud(system, directory), 0);
    ASSERT_GE(log.size(), 2U);
    EXPECT_EQ(log[log.size() - 2], "unlink " + pidFile);
    EXPECT_EQ(log.back(), "exit 0");
}

TEST_F(Roles, WithoutAWindowServerThePidFileIsRemovedAndTheStatusIsNotZero) {
    system.windowServer = false;
    EXPECT_NE(hud(system, directory), 0);
    EXPECT_EQ(log.back(), "unlink " + pidFile);
    EXPECT_FALSE(files.files.fileExistsAtPath(pidFile));
}

struct PidCase {
    const char* name;
    const char* contents;
    const char* probed;  // what -check asks for
    const char* killed;  // what -exit and -hud send, or nothing
};

class PidFileContents : public Roles, public testing::WithParamInterface<PidCase> {};

TEST_P(PidFileContents, CheckProbesTheNumberWhateverItsSign) {
    files.files.writeAtomically(pidFile, GetParam().contents);
    EXPECT_EQ(check(files, process, directory), 1);
    EXPECT_THAT(log, ElementsAre(GetParam().probed));
    process.exists = false;
    EXPECT_EQ(check(files, process, directory), 0);
}

TEST_P(PidFileContents, ExitKillsPositiveNumbersOnlyAndAlwaysRemovesTheFile) {
    files.files.writeAtomically(pidFile, GetParam().contents);
    EXPECT_EQ(exitOverlay(files, process, directory), 0);
    std::vector<std::string> expected;
    if (GetParam().killed) expected.emplace_back(GetParam().killed);
    expected.push_back("unlink " + pidFile);
    EXPECT_THAT(log, ElementsAreArray(expected));
}

TEST_P(PidFileContents, HudKillsPositiveNumbersOnly) {
    files.files.writeAtomically(pidFile, GetParam().contents);
    hud(system, directory);
    if (GetParam().killed) {
        EXPECT_EQ(log.front(), GetParam().killed);
    } else {
        EXPECT_EQ(log.front(), "write " + pidFile + " 4321");
    }
}

INSTANTIATE_TEST_SUITE_P(
    All, PidFileContents,
    testing::Values(PidCase{"Positive", "99", "kill 99 0", "kill 99 9"},
                    PidCase{"Zero", "0", "kill 0 0", nullptr},
                    PidCase{"Empty", "", "kill 0 0", nullptr},
                    PidCase{"Letters", "abc", "kill 0 0", nullptr},
                    PidCase{"Negative", "-5", "kill -5 0", nullptr},
                    PidCase{"AmidOtherText", " 12x", "kill 12 0", "kill 12 9"},
                    PidCase{"PlusSignAndNewline", "+7\n", "kill 7 0", "kill 7 9"},
                    PidCase{"TooLarge", "99999999999", "kill 2147483647 0", "kill 2147483647 9"},
                    PidCase{"TooSmall", "-99999999999", "kill -2147483648 0", nullptr}),
    [](const auto& suite) { return std::string(suite.param.name); });

TEST_F(Roles, WithoutAFileNothingIsProbedKilledOrRemoved) {
    EXPECT_EQ(check(files, process, directory), 0);
    EXPECT_EQ(exitOverlay(files, process, directory), 0);
    EXPECT_TRUE(log.empty());
    hud(system, directory);
    EXPECT_EQ(log.front(), "write " + pidFile + " 4321");
}

TEST_F(Roles, AFileThatIsNotUtf8CountsAsAbsent) {
    for (const char* contents :
         {"12\xff", "\xc0\xb1", "7\xed\xa0\x80", "5\xf5\x80\x80\x80", "9\xe2\x82"}) {
        files.files.writeAtomically(pidFile, contents);
        EXPECT_EQ(check(files, process, directory), 0);
        EXPECT_EQ(exitOverlay(files, process, directory), 0);
        EXPECT_TRUE(log.empty());
    }
    files.files.writeAtomically(pidFile, "12 \xe8\xa7\xa6\xf0\x9f\x8d\x8e");
    EXPECT_EQ(check(files, process, directory), 1);
}

}  // namespace
}  // namespace skavlo
