#include "settings/settings_file.h"
#include "ui/settings_view_controller.h"

namespace skavlo {

namespace {

constexpr double kSuppressionSeconds = 0.5;

}  // namespace

void SettingsViewController::skv_saveSettingsAndNotify() {
    g_skv_daemonQueue().async(
        [&system = system_, snapshot = skv_settings, notifies = skv_overlayEnabled] {
            writeSettings(system.files, system.propertyLists, system.directory, snapshot);
            if (notifies) system.notifications.notify_post(kReloadNotification);
        });
}

void SettingsViewController::skv_restoreDefaults() {
    skv_suppressControlActions = true;
    // What the user asked for last counts.
    endImport();
    const std::string image = system_.directory.customImageFile();
    if (system_.files.fileExistsAtPath(image)) system_.files.unlink(image);
    skv_multiTouchSwitch->setOn(true, true);
    skv_singleTouchSwitch->setOn(false, true);
    skv_settings = restoredSettings(skv_settings, skv_recordOnlySwitch->isOn());
    view_.reloadData();
    skv_saveSettingsAndNotify();
    // A second restore meanwhile starts its own half second.
    suppressionTimer_ = system_.mainQueue.scheduledTimer(
        kSuppressionSeconds, false, [this] { skv_suppressControlActions = false; });
}

}  // namespace skavlo
