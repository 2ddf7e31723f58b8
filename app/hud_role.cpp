#include <csignal>
#include <string>

#include "app/pid_file.h"
#include "app/roles.h"
#include "overlay/hid_input.h"

namespace skavlo {

namespace {

constexpr unsigned kMobileUser = 501;  // and group: the settings application runs as this
constexpr int kHighestPriority = -20;
constexpr int kSetHighWaterMark = 5;
constexpr unsigned kMemoryLimitMegabytes = 18;
constexpr int kFirstMajorVersionWithEvents = 15;

void takeOverPidFile(OverlaySystem& system, const std::string& path) {
    if (const auto previous = readPidFile(system.files(), path); previous && *previous >= 1) {
        system.process().kill(*previous, SIGKILL);
    }
    system.files().writeAtomically(path, std::to_string(system.process().getpid()));
    system.files().chown(path, kMobileUser, kMobileUser);
}

void startApplication(OverlaySystem& system) {
    system.CFRunLoopGetCurrent();
    system.GSInitialize();
    system.BKSDisplayServicesStart();
    system.UIApplicationInitialize();
    system.UIApplicationInstantiateSingleton();
    system.setNewDelegate();
    if (system.respondsToAccessibilityInit()) system.accessibilityInit();
}

void startInput(OverlaySystem& system) {
    g_skv_hidClient = system.IOHIDEventSystemClientCreate();
    if (!g_skv_hidClient) return;
    g_skv_hidClient->scheduleWithMainRunLoop();
    skv_enable_hid_callback();
}

}  // namespace

int hud(OverlaySystem& system, const SettingsDirectory& directory) {
    takeOverPidFile(system, directory.pidFile());
    const auto registration =
        system.notifications().notify_register_dispatch(kExitNotification, [&] {
            system.files().unlink(directory.pidFile());
            system.exit(0);
        });
    system.process().setpriority(kHighestPriority);
    system.process().memorystatus_control(kSetHighWaterMark, system.process().getpid(),
                                          kMemoryLimitMegabytes);
    if (!system.UIScreen_initialize()) {
        system.files().unlink(directory.pidFile());
        return 1;
    }
    startApplication(system);
    startInput(system);
    system.NSRunLoop_currentRunLoop();
    if (system.operatingSystemMajorVersion().value_or(0) >= kFirstMajorVersionWithEvents) {
        system.GSEventInitialize(false);
        system.GSEventPushRunLoopMode();
    }
    system.completeAndRunAsPlugin();
    const int status = system.CFRunLoopRun();
    skv_disable_hid_callback();
    return status;
}

}  // namespace skavlo
