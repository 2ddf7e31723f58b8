// The settings application starts, watches and stops real overlays.
#include <gmock/gmock.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <filesystem>

#include "platform/linux/loop/asio_run_loop.h"
#include "platform/linux/notify/socket_notifications.h"
#include "settings/settings_directory.h"
#include "tests/e2e/settings/settings_rig.h"

namespace skavlo {
namespace {

using OverlayControl = SettingsRig;

constexpr const char* kEnable = "开启 Skavlo";
constexpr const char* kRecordOnly = "仅录屏显示";

// Counts the notifications of a name that reach a registrant.
class NotificationCounter {
  public:
    explicit NotificationCounter(const std::string& name)
        : notifications_(loop_, SKAVLO_RUN_DIRECTORY),
          registration_(notifications_.notify_register_dispatch(name, [this] { ++count_; })) {}
    // Of those posted so far.
    int count() {
        loop_.context().poll();
        return count_;
    }
    // Waits for so many in all.
    bool reaches(int wanted) {
        while (count() < wanted) {
            if (loop_.context().run_one_for(std::chrono::seconds(20)) == 0) return false;
        }
        return true;
    }

  private:
    int count_ = 0;
    AsioRunLoop loop_;
    SocketNotifications notifications_;
    std::unique_ptr<NotificationRegistration> registration_;
};

TEST_F(OverlayControl, SwitchingOnStartsTheOverlayAndTheSwitchStaysOn) {
    ASSERT_NO_FATAL_FAILURE(open());
    EXPECT_FALSE(item(rig::kSwitchRole, kEnable).checked);
    click(rig::kSwitchRole, kEnable);
    ASSERT_TRUE(overlayComes());
    EXPECT_EQ(overlayProcesses(), 1);
    ASSERT_TRUE(probesPass(2));
    EXPECT_TRUE(item(rig::kSwitchRole, kEnable).checked);
}

TEST_F(OverlayControl, TheOverlayLeadsAProcessGroupOfItsOwn) {
    ASSERT_NO_FATAL_FAILURE(open());
    click(rig::kSwitchRole, kEnable);
    ASSERT_TRUE(overlayComes());
    EXPECT_EQ(getpgid(*overlayPid()), *overlayPid());
}

// What the overlay was given is what the settings application has itself.
TEST_F(OverlayControl, TheOverlayInheritsTheChoiceOfTheRenderer) {
    const std::string variable = "CI_USE_SOFTWARE_RENDERER";
    ASSERT_EQ(setenv(variable.c_str(), "0", 1), 0);
    ASSERT_NO_FATAL_FAILURE(open());
    ASSERT_EQ(unsetenv(variable.c_str()), 0);
    click(rig::kSwitchRole, kEnable);
    ASSERT_TRUE(overlayComes());
    const auto environment = contents("/proc/" + std::to_string(*overlayPid()) + "/environ");
    ASSERT_TRUE(environment);
    const std::string end(1, '\0');
    EXPECT_THAT(end + *environment, testing::HasSubstr(end + variable + "=1" + end));
    EXPECT_THAT(*environment, testing::Not(testing::HasSubstr(variable + "=0")));
}

TEST_F(OverlayControl, SwitchingOffEndsTheOverlayAndItsFile) {
    ASSERT_NO_FATAL_FAILURE(open());
    click(rig::kSwitchRole, kEnable);
    ASSERT_TRUE(overlayComes());
    click(rig::kSwitchRole, kEnable);
    EXPECT_TRUE(overlayGoes());
    EXPECT_FALSE(std::filesystem::exists(pidFile()));
    EXPECT_FALSE(item(rig::kSwitchRole, kEnable).checked);
}

TEST_F(OverlayControl, AKilledOverlayTurnsTheSwitchOff) {
    ASSERT_NO_FATAL_FAILURE(open());
    click(rig::kSwitchRole, kEnable);
    ASSERT_TRUE(overlayComes());
    ASSERT_TRUE(probesPass(1));
    kill(*overlayPid(), SIGKILL);
    EXPECT_TRUE(switchBecomes(kEnable, false));
}

TEST_F(OverlayControl, AnOverlayThatRunsAlreadyTurnsTheSwitchOn) {
    ASSERT_NO_FATAL_FAILURE(open());
    ASSERT_NO_FATAL_FAILURE(launchOverlay());
    EXPECT_TRUE(switchBecomes(kEnable, true));
    overlay().stop();
}

TEST_F(OverlayControl, OnOffOnInQuickSuccessionLeavesExactlyOneOverlay) {
    NotificationCounter exits(kExitNotification);
    ASSERT_NO_FATAL_FAILURE(open());
    for (int i = 0; i < 3; ++i) click(rig::kSwitchRole, kEnable);
    ASSERT_TRUE(exits.reaches(3));
    // The overlay itself reads the file once when it starts; the next one is a probe, behind all.
    ASSERT_TRUE(probesPass(2));
    EXPECT_EQ(overlayProcesses(), 1);
    EXPECT_TRUE(item(rig::kSwitchRole, kEnable).checked);
}

TEST_F(OverlayControl, AFailedStartTurnsTheSwitchBack) {
    // The program without the overlay's module beside it.
    const std::filesystem::path built = SKAVLO_EXECUTABLE;
    const std::filesystem::path lame = built.parent_path() / "without-overlay";
    std::filesystem::remove_all(lame);
    std::filesystem::create_directory(lame);
    std::filesystem::copy_file(built, lame / "skavlo");
    for (const char* needed : {"skavlo-ui.so", "resources"}) {
        std::filesystem::create_symlink(built.parent_path() / needed, lame / needed);
    }
    ASSERT_NO_FATAL_FAILURE(open(lame / "skavlo"));
    click(rig::kSwitchRole, kEnable);
    EXPECT_TRUE(switchBecomes(kEnable, true));
    EXPECT_TRUE(switchBecomes(kEnable, false));
    std::filesystem::remove_all(lame);
}

TEST_F(OverlayControl, RecordOnlyOffHidesFirstAndChangesTheModeLater) {
    ASSERT_NO_FATAL_FAILURE(open());
    click(rig::kSwitchRole, kRecordOnly);
    ASSERT_TRUE(settingBecomes("onlyShowInRecord", true));
    EXPECT_EQ(settings()["forceHide"], PropertyValue(false));
    click(rig::kSwitchRole, kRecordOnly);
    ASSERT_TRUE(settingBecomes("forceHide", true));
    EXPECT_EQ(settings()["onlyShowInRecord"], PropertyValue(true));
    EXPECT_EQ(item(rig::kSwitchRole, kRecordOnly).description, "正在处理");
    ASSERT_TRUE(settingBecomes("onlyShowInRecord", false));
    EXPECT_EQ(settings()["forceHide"], PropertyValue(false));
    EXPECT_EQ(item(rig::kSwitchRole, kRecordOnly).description, "");
}

TEST_F(OverlayControl, ClosingTheWindowWhileRecordOnlyIsTurnedOffStillFinishesIt) {
    ASSERT_NO_FATAL_FAILURE(open());
    click(rig::kSwitchRole, kRecordOnly);
    ASSERT_TRUE(settingBecomes("onlyShowInRecord", true));
    click(rig::kSwitchRole, kRecordOnly);
    ASSERT_TRUE(settingBecomes("forceHide", true));
    close();
    EXPECT_EQ(settings()["onlyShowInRecord"], PropertyValue(false));
    EXPECT_EQ(settings()["forceHide"], PropertyValue(false));
}

TEST_F(OverlayControl, ChangesNotifyOnlyWhileTheOverlayIsOn) {
    NotificationCounter reloads(kReloadNotification);
    ASSERT_NO_FATAL_FAILURE(open());
    click(rig::kSwitchRole, "单指显示");
    ASSERT_TRUE(settingBecomes("singleFingerMode", true));
    EXPECT_EQ(reloads.count(), 0);
    click(rig::kSwitchRole, kEnable);
    ASSERT_TRUE(overlayComes());
    click(rig::kSwitchRole, "多指显示");
    ASSERT_TRUE(settingBecomes("singleFingerMode", 0));
    // The notification follows the write; a probe follows both.
    ASSERT_TRUE(probesPass(1));
    EXPECT_EQ(reloads.count(), 1);
}

TEST_F(OverlayControl, TheOverlayOutlivesTheSettingsApplication) {
    ASSERT_NO_FATAL_FAILURE(open());
    click(rig::kSwitchRole, kEnable);
    ASSERT_TRUE(overlayComes());
    close();
    EXPECT_TRUE(overlayPid());
}

}  // namespace
}  // namespace skavlo
