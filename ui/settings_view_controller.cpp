// Life of the screen: loading, header, language.
#include "ui/settings_view_controller.h"

#include <functional>

#include "settings/loose_value.h"
#include "settings/settings_file.h"

namespace skavlo {

SettingsViewController::SettingsViewController(SettingsSystem& system, SettingsView& view)
    : system_(system),
      view_(view),
      overlayProcess_(system.spawner, system.notifications, system.executablePath) {}

SettingsViewController::~SettingsViewController() {
    system_.application.removeObserver(this);
    if (skv_statusTimer) skv_statusTimer->invalidate();
}

void SettingsViewController::viewDidLoad() {
    skv_suppressControlActions = false;
    setHeader();
    loadSettings();
    makeSwitches();
    observeApplication();
    skv_appDidBecomeActive();
    skv_pollOverlayStatus();
}

void SettingsViewController::viewDidLayoutSubviews() {
    scrollViewDidScroll(view_.tableScrollPosition());
}

// The language is the file's: at the start nothing else knows it yet.
void SettingsViewController::setHeader() {
    const auto stored = readSettings(system_.files, system_.propertyLists, system_.directory);
    const bool english = stored && boolValue(lookUp(*stored, "isEnglish"));
    const Text& about = textPair(TextId::about);
    const AboutInfo& info = system_.about;
    view_.setHeader({.languageButtonTitle = english ? "EN / 中" : "中 / EN",
                     .aboutText = fillIn(english ? about.en : about.zh,
                                         {info.version.value_or("1.0"), info.author, info.channel}),
                     .channel = info.channel});
}

void SettingsViewController::loadSettings() {
    skv_settings =
        loadedSettings(readSettings(system_.files, system_.propertyLists, system_.directory));
    writeSettings(system_.files, system_.propertyLists, system_.directory, skv_settings);
}

void SettingsViewController::makeSwitches() {
    using Self = SettingsViewController;
    const bool single = boolValue(lookUp(skv_settings, "singleFingerMode"));
    skv_enableSwitch = makeSwitch(skv_overlayEnabled, &Self::skv_enableSwitchChanged);
    skv_recordOnlySwitch = makeSwitch(boolValue(lookUp(skv_settings, "onlyShowInRecord")),
                                      &Self::skv_recordOnlySwitchChanged);
    skv_multiTouchSwitch = makeSwitch(!single, &Self::skv_multiTouchSwitchChanged);
    skv_singleTouchSwitch = makeSwitch(single, &Self::skv_singleTouchSwitchChanged);
}

std::shared_ptr<SKVFakeSwitch> SettingsViewController::makeSwitch(
    bool on, void (SettingsViewController::*action)(SKVFakeSwitch&)) {
    auto result = std::make_shared<SKVFakeSwitch>();
    result->setOn(on);
    result->addTarget(whileAlive(std::bind_front(action, this)));
    return result;
}

// Observes once more at every change of language.
void SettingsViewController::observeApplication() {
    ApplicationNotifications& application = system_.application;
    application.addObserver(this, ApplicationEvent::didBecomeActive,
                            [this] { skv_appDidBecomeActive(); });
    application.addObserver(this, ApplicationEvent::didEnterBackground,
                            [this] { skv_appDidEnterBackground(); });
}

void SettingsViewController::skv_toggleLanguage() {
    if (skv_suppressControlActions) return;
    const bool english = boolValue(lookUp(skv_settings, "isEnglish"));
    skv_settings["isEnglish"] = english ? 0 : 1;
    writeSettings(system_.files, system_.propertyLists, system_.directory, skv_settings);
    skv_lastToggleTime = 0;
    viewDidLoad();
    view_.reloadData();
}

void SettingsViewController::skv_infoBtnClicked() {
    view_.presentAlert({.title = L(TextId::appIntro),
                        .message = L(TextId::appIntroMessage),
                        .actions = {{.title = L(TextId::ok)}}});
}

const char* SettingsViewController::L(const char* zh, const char* en) const {
    return boolValue(lookUp(skv_settings, "isEnglish")) ? en : zh;
}

const char* SettingsViewController::L(TextId id) const {
    const Text& pair = textPair(id);
    return L(pair.zh, pair.en);
}

}  // namespace skavlo
