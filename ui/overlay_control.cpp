// Starting, probing and stopping the overlay, and the switches that act on it.
#include <cstdint>
#include <functional>

#include "settings/loose_value.h"
#include "ui/settings_view_controller.h"

namespace skavlo {

namespace {

constexpr double kGraceSeconds = 1.5;  // a user's fresh toggle wins over the probe
constexpr double kPollSeconds = 2;
constexpr std::uint32_t kExitMicroseconds = 250'000;      // for an overlay to go
constexpr std::uint32_t kHiddenMicroseconds = 1'500'000;  // markers stay away meanwhile

}  // namespace

SerialQueue& SettingsViewController::g_skv_daemonQueue() {
    if (!daemonQueue_) daemonQueue_ = system_.dispatch_queue_create(kDaemonQueueLabel);
    return *daemonQueue_;
}

void SettingsViewController::skv_enableSwitchChanged(SKVFakeSwitch& sender) {
    skv_lastToggleTime = system_.clock.timeIntervalSince1970();
    skv_overlayEnabled = sender.isOn();
    SerialQueue& queue = g_skv_daemonQueue();
    queue.async([&queue, process = overlayProcess_, on = sender.isOn()]() mutable {
        process.postExit();
        queue.usleep(kExitMicroseconds);
        if (on) process.spawnHud();
    });
}

bool SettingsViewController::isWithinGracePeriod() const {
    return system_.clock.timeIntervalSince1970() - skv_lastToggleTime < kGraceSeconds;
}

void SettingsViewController::skv_pollOverlayStatus() {
    if (isWithinGracePeriod()) return;
    auto showAnswer = whileAlive([this](bool running) {
        if (isWithinGracePeriod()) return;
        skv_overlayEnabled = running;
        skv_enableSwitch->setOn(running, false);
    });
    g_skv_daemonQueue().async(
        [&mainQueue = system_.mainQueue, process = overlayProcess_, showAnswer]() mutable {
            process.reapFinishedChildren();
            const bool running = process.skv_isOverlayRunning();
            mainQueue.async([showAnswer, running] { showAnswer(running); });
        });
}

void SettingsViewController::skv_appDidBecomeActive() {
    if (skv_statusTimer) return;
    skv_statusTimer =
        system_.mainQueue.scheduledTimer(kPollSeconds, true, [this] { skv_pollOverlayStatus(); });
}

void SettingsViewController::skv_appDidEnterBackground() {
    if (skv_statusTimer) skv_statusTimer->invalidate();
    skv_statusTimer.reset();
}

void SettingsViewController::skv_recordOnlySwitchChanged(SKVFakeSwitch& sender) {
    if (skv_suppressControlActions) return;
    if (!sender.isOn()) {
        turnRecordOnlyOff(sender);
        return;
    }
    skv_settings["onlyShowInRecord"] = true;
    skv_settings["forceHide"] = false;
    skv_saveSettingsAndNotify();
}

// In stages: the markers vanish at once and stay hidden while the mode changes.
void SettingsViewController::turnRecordOnlyOff(SKVFakeSwitch& sender) {
    sender.setLoading(true);
    skv_settings["forceHide"] = true;
    skv_saveSettingsAndNotify();
    auto showAgain = whileAlive([this, sender = sender.weak_from_this()] {
        if (const auto itsSwitch = sender.lock()) itsSwitch->setLoading(false);
        // A change of language meanwhile has made a new switch, of a setting that was still on.
        if (skv_recordOnlySwitch != sender.lock()) skv_recordOnlySwitch->setOn(false);
        skv_settings["onlyShowInRecord"] = false;
        skv_settings["forceHide"] = false;
        skv_saveSettingsAndNotify();
    });
    SerialQueue& queue = g_skv_daemonQueue();
    queue.async(
        [&queue, &mainQueue = system_.mainQueue, process = overlayProcess_, showAgain]() mutable {
            // Only the time that the probe takes counts.
            static_cast<void>(process.skv_isOverlayRunning());
            queue.usleep(kHiddenMicroseconds);
            mainQueue.async(showAgain);
        });
}

void SettingsViewController::skv_multiTouchSwitchChanged(SKVFakeSwitch& sender) {
    if (skv_suppressControlActions) return;
    skv_singleTouchSwitch->setOn(!sender.isOn(), true);
    skv_settings["singleFingerMode"] = sender.isOn() ? 0 : 1;
    skv_saveSettingsAndNotify();
}

void SettingsViewController::skv_singleTouchSwitchChanged(SKVFakeSwitch& sender) {
    if (skv_suppressControlActions) return;
    skv_multiTouchSwitch->setOn(!sender.isOn(), true);
    skv_settings["singleFingerMode"] = sender.isOn();
    skv_saveSettingsAndNotify();
}

}  // namespace skavlo
