// The settings screen's decisions. What it looks like is the SettingsView's.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "control/overlay_process.h"
#include "platform/files.h"
#include "platform/image_shrinker.h"
#include "platform/notifications.h"
#include "platform/property_list.h"
#include "platform/run_loop.h"
#include "platform/serial_queue.h"
#include "platform/spawner.h"
#include "platform/time.h"
#include "settings/settings_directory.h"
#include "ui/application_notifications.h"
#include "ui/settings_view.h"
#include "ui/text_table.h"

namespace skavlo {

inline constexpr const char* kDaemonQueueLabel = "com.oxbrel.skavlo.daemonQueue";

// What the settings screen stands on; everything outlives it.
struct SettingsSystem {
    RunLoop& mainQueue;
    // Called once, when the queue is first needed.
    std::function<std::unique_ptr<SerialQueue>(const char* label)> dispatch_queue_create;
    const WallClock& clock;
    Files& files;
    const PropertyLists& propertyLists;
    Notifications& notifications;
    Spawner& spawner;
    ImageShrinker& imageShrinker;
    ApplicationNotifications& application;
    SettingsDirectory directory;
    std::string executablePath;
    AboutInfo about;
};

enum class DisplayMode { color = 0, image = 1, emoji = 2 };

// Sections of the table.
inline constexpr int kLaunchSection = 0;
inline constexpr int kTouchSection = 1;
inline constexpr int kDisplaySection = 2;

struct SettingsRow;  // ui/settings_rows.h

class SettingsViewController {
  public:
    // Both outlive it.
    SettingsViewController(SettingsSystem& system, SettingsView& view);
    ~SettingsViewController();
    SettingsViewController(const SettingsViewController&) = delete;
    SettingsViewController& operator=(const SettingsViewController&) = delete;

    // Once at the start and once more at every change of language.
    void viewDidLoad();
    void viewDidLayoutSubviews();

    // Header.
    void skv_toggleLanguage();
    void skv_infoBtnClicked();
    // The English text when the settings say English, else the Chinese one.
    [[nodiscard]] const char* L(const char* zh, const char* en) const;

    // The table's data source. An unknown section has no header and no rows.
    [[nodiscard]] int numberOfSections() const;
    [[nodiscard]] int numberOfRowsInSection(int section) const;
    [[nodiscard]] std::optional<std::string> titleForHeaderInSection(int section) const;
    [[nodiscard]] std::unique_ptr<TableViewCell> cellForRowAtIndexPath(IndexPath indexPath);
    void skv_reloadTable();

    // Selection and scrolling.
    void didSelectRowAtIndexPath(IndexPath indexPath);
    void scrollViewDidScroll(const ScrollPosition& scrollView);

    // Value controls. While skv_suppressControlActions is set they do nothing.
    void skv_displayModeChanged(const SKVFakeSwitch& sender);
    void skv_fillColorChanged(const ColorWell& sender);
    void skv_borderColorChanged(const ColorWell& sender);
    void skv_emojiFillColorChanged(const ColorWell& sender);
    void skv_emojiBorderColorChanged(const ColorWell& sender);
    void skv_sliderValueChanged(Slider& sender);
    void skv_sliderEditingEnded(Slider& sender);
    void skv_stepperMinusTapped(StepperButton& sender);
    void skv_stepperPlusTapped(StepperButton& sender);
    void skv_stepSlider(StepperButton& button, bool isPlus);
    void skv_displaySwitchChanged(const SKVFakeSwitch& sender);
    void skv_emojiFieldChanged(EmojiField& sender);

    // Save and restore.
    void skv_saveSettingsAndNotify();
    void skv_restoreDefaults();

    // Custom image. Paths of the picked files; only the first counts.
    void skv_presentImagePicker();
    void documentPicker(const std::vector<std::string>& didPickDocumentsAtURLs);

    // The overlay process.
    void skv_enableSwitchChanged(SKVFakeSwitch& sender);
    void skv_recordOnlySwitchChanged(SKVFakeSwitch& sender);
    void skv_multiTouchSwitchChanged(SKVFakeSwitch& sender);
    void skv_singleTouchSwitchChanged(SKVFakeSwitch& sender);
    void skv_pollOverlayStatus();
    void skv_appDidBecomeActive();
    void skv_appDidEnterBackground();

    PropertyDictionary skv_settings;
    bool skv_overlayEnabled = false;
    bool skv_suppressControlActions = false;
    double skv_lastToggleTime = 0;  // seconds since 1970
    std::unique_ptr<Timer> skv_statusTimer;
    std::shared_ptr<SKVFakeSwitch> skv_enableSwitch;
    std::shared_ptr<SKVFakeSwitch> skv_recordOnlySwitch;
    std::shared_ptr<SKVFakeSwitch> skv_multiTouchSwitch;
    std::shared_ptr<SKVFakeSwitch> skv_singleTouchSwitch;
    // Made when it is first asked for. It goes with the controller and runs what it still holds
    // before; what those blocks send back to the main queue then finds nobody and is dropped.
    [[nodiscard]] SerialQueue& g_skv_daemonQueue();

  private:
    // The action, as one who may come after the controller's end has to be given it: does nothing
    // then. Main thread only, where the controller ends.
    template <typename Action>
    [[nodiscard]] auto whileAlive(Action action) const {
        return [alive = std::weak_ptr<const bool>(alive_),
                action = std::move(action)](auto&&... arguments) {
            if (!alive.expired()) action(arguments...);
        };
    }
    [[nodiscard]] const char* L(TextId id) const;

    void setHeader();
    void loadSettings();
    void makeSwitches();
    [[nodiscard]] std::shared_ptr<SKVFakeSwitch> makeSwitch(
        bool on, void (SettingsViewController::*action)(SKVFakeSwitch&));
    void observeApplication();

    [[nodiscard]] bool isWithinGracePeriod() const;
    void turnRecordOnlyOff(SKVFakeSwitch& sender);

    void fillCell(TableViewCell& cell, const SettingsRow& row);
    [[nodiscard]] std::shared_ptr<SliderRow> makeSliderRow(const SettingsRow& row);
    [[nodiscard]] AccessoryView makeColorWell(const SettingsRow& row);
    [[nodiscard]] AccessoryView makeDisplaySwitch(const SettingsRow& row);
    [[nodiscard]] AccessoryView makeEmojiField();
    [[nodiscard]] AccessoryView makeThumbnail() const;

    void storeColor(const char* key, const ColorWell& sender);
    void presentRestoreAlert();

    void shrinkImage(const std::string& path);
    void storeImage(const std::optional<std::string>& data);
    // A picture that is still being made smaller is dropped when it arrives.
    void endImport();

    SettingsSystem& system_;
    SettingsView& view_;
    OverlayProcess overlayProcess_;
    std::unique_ptr<Timer> suppressionTimer_;
    // Of the image that is being made smaller; null while there is none.
    std::shared_ptr<const bool> import_;
    std::shared_ptr<const bool> alive_ = std::make_shared<bool>(true);
    std::unique_ptr<SerialQueue> daemonQueue_;
};

}  // namespace skavlo
