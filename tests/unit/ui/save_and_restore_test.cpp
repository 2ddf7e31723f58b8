#include "settings/image_import.h"
#include "tests/unit/ui/settings_fixture.h"

namespace skavlo {
namespace {

class Save : public SettingsFixture {};

TEST_F(Save, WithTheOverlayOffWritesAndPostsNothing) {
    load();
    controller->skv_saveSettingsAndNotify();
    EXPECT_TRUE(log.events.empty()) << "writing belongs on the queue";
    loop.runPosted();
    EXPECT_EQ(log.whats(), Strings{kWrite});
}

TEST_F(Save, WithTheOverlayOnTheNotificationFollowsTheWrite) {
    load();
    controller->skv_overlayEnabled = true;
    controller->skv_saveSettingsAndNotify();
    loop.runPosted();
    EXPECT_EQ(log.whats(), (Strings{kWrite, kReload}));
}

TEST_F(Save, ReadsTheFlagWhenItIsAskedFor) {
    load();
    controller->skv_saveSettingsAndNotify();
    controller->skv_overlayEnabled = true;
    loop.runPosted();
    EXPECT_EQ(log.whats(), Strings{kWrite});
    log.restart();
    controller->skv_saveSettingsAndNotify();
    controller->skv_overlayEnabled = false;
    loop.runPosted();
    EXPECT_EQ(log.whats(), (Strings{kWrite, kReload}));
}

TEST_F(Save, TheNotificationFollowsEvenAFailedWrite) {
    load();
    const std::string before = bytes();
    files.full = true;
    controller->skv_overlayEnabled = true;
    settings()["colorSize"] = 99;
    controller->skv_saveSettingsAndNotify();
    loop.runPosted();
    EXPECT_EQ(log.whats(), (Strings{kWrite, kReload}));
    EXPECT_EQ(bytes(), before);
    EXPECT_EQ(settings().at("colorSize"), PropertyValue(99));
}

TEST_F(Save, WritesTheSnapshotOfTheMoment) {
    load();
    settings()["colorSize"] = 20;
    controller->skv_saveSettingsAndNotify();
    settings()["colorSize"] = 30;
    loop.runPosted();
    EXPECT_EQ(stored().at("colorSize"), PropertyValue(20));
}

TEST_F(Save, SavesReachTheFileInTheOrderOfTheirRequests) {
    load();
    std::vector<PropertyValue> seen;
    for (int size = 10; size < 15; ++size) {
        settings()["colorSize"] = size;
        controller->skv_saveSettingsAndNotify();
        controller->g_skv_daemonQueue().async(
            [this, &seen] { seen.push_back(stored().at("colorSize")); });
    }
    loop.runPosted();
    EXPECT_EQ(seen, (std::vector<PropertyValue>{10, 11, 12, 13, 14}));
}

TEST_F(Save, WaitsBehindAnOverlayThatStarts) {
    load();
    tap(controller->skv_enableSwitch);
    controller->skv_saveSettingsAndNotify();
    loop.runPosted();
    EXPECT_EQ(log.events,
              (Events{{0, kExit}, {0.25, "spawn -hud"}, {0.25, kWrite}, {0.25, kReload}}));
}

class Restore : public SettingsFixture {
  protected:
    void importImage() {
        files.files.writeAtomically(directory.customImageFile(), "image");
        settings()["imagePath"] = directory.customImageFile();
        log.restart();
    }
};

TEST_F(Restore, KeepsTheModeAndForgetsTheImage) {
    load({{"displayMode", 2}});
    importImage();
    controller->skv_restoreDefaults();
    loop.runPosted();
    EXPECT_EQ(settings().at("displayMode"), PropertyValue(2));
    EXPECT_EQ(settings().at("imagePath"), PropertyValue(""));
    EXPECT_FALSE(files.fileExistsAtPath(directory.customImageFile()));
    EXPECT_EQ(stored(), settings());
    EXPECT_EQ(log.whats(), (Strings{"unlink image", "reloadData", kWrite}));
}

TEST_F(Restore, WithoutAnImageRemovesNothing) {
    load();
    controller->skv_restoreDefaults();
    loop.runPosted();
    EXPECT_EQ(log.whats(), (Strings{"reloadData", kWrite}));
}

TEST_F(Restore, KeepsRecordOnlyAsTheSwitchShowsIt) {
    load({{"onlyShowInRecord", true}});
    controller->skv_restoreDefaults();
    EXPECT_EQ(settings().at("onlyShowInRecord"), PropertyValue(true));
    controller->skv_recordOnlySwitch->setOn(false);
    controller->skv_restoreDefaults();
    EXPECT_EQ(settings().at("onlyShowInRecord"), PropertyValue(false));
}

TEST_F(Restore, ResetsEveryLookAndNothingElse) {
    PropertyDictionary changed{{"unknown", 1}};
    for (const auto& [key, value] : defaultSettings()) changed[key] = 7;
    load(changed);
    controller->skv_recordOnlySwitch->setOn(false);
    controller->skv_restoreDefaults();
    PropertyDictionary expected = defaultSettings();
    expected["isEnglish"] = true;
    expected["displayMode"] = 7;
    EXPECT_EQ(settings(), expected);
}

TEST_F(Restore, LanguageBecomesABooleanAndModeStaysTheObjectItIs) {
    load({{"isEnglish", 0}, {"displayMode", "2"}});
    controller->skv_restoreDefaults();
    EXPECT_EQ(settings().at("isEnglish"), PropertyValue(false));
    EXPECT_EQ(settings().at("displayMode"), PropertyValue("2"));
    settings().erase("displayMode");
    controller->skv_restoreDefaults();
    EXPECT_EQ(settings().at("displayMode"), PropertyValue(0));
}

TEST_F(Restore, ReturnsToMultiTouchWithGlidingSwitches) {
    load({{"singleFingerMode", true}});
    std::vector<bool> changes;
    const auto record = [&](bool animated) { changes.push_back(animated); };
    controller->skv_multiTouchSwitch->didChange = record;
    controller->skv_singleTouchSwitch->didChange = record;
    controller->skv_restoreDefaults();
    EXPECT_TRUE(controller->skv_multiTouchSwitch->isOn());
    EXPECT_FALSE(controller->skv_singleTouchSwitch->isOn());
    EXPECT_EQ(changes, (std::vector{true, true}));
    EXPECT_EQ(settings().at("singleFingerMode"), PropertyValue(false));
}

TEST_F(Restore, NotifiesARunningOverlay) {
    load();
    controller->skv_overlayEnabled = true;
    controller->skv_restoreDefaults();
    loop.runPosted();
    EXPECT_EQ(log.whats(), (Strings{"reloadData", kWrite, kReload}));
}

TEST_F(Restore, SuppressesActionsForHalfASecond) {
    load();
    const auto row = displayCell(5)->sliderRow;
    controller->skv_restoreDefaults();
    loop.runPosted();
    const PropertyDictionary restored = settings();
    const auto drag = [&] {
        row->slider.setValue(0.9F);
        row->valueChanged(row->slider);
        row->editingEnded(row->slider);
        row->plusTapped(row->plus);
    };
    advance(0.499);
    drag();
    loop.runPosted();
    EXPECT_EQ(settings(), restored);
    EXPECT_EQ(count(kWrite), 1);
    advance(0.001);
    EXPECT_FALSE(controller->skv_suppressControlActions);
    drag();
    EXPECT_EQ(settings().at("colorAlpha"), PropertyValue(1.0));
}

TEST_F(Restore, EveryControlIsSuppressed) {
    load({{"displayMode", 2}, {"emojiShowBorder", true}});
    const auto field = displayControl<EmojiField>(3);
    const auto border = displayControl<SKVFakeSwitch>(8);
    const auto fill = displayControl<ColorWell>(9);
    controller->skv_restoreDefaults();
    loop.runPosted();
    const PropertyDictionary restored = settings();
    log.restart();
    field->text = "";
    field->editingDidEnd(*field);
    border->touchUpInside();
    fill->valueChanged(*fill);
    controller->skv_displayModeChanged(SKVFakeSwitch(1));
    controller->skv_toggleLanguage();
    tap(controller->skv_multiTouchSwitch);
    tap(controller->skv_singleTouchSwitch);
    tap(controller->skv_recordOnlySwitch);
    loop.runPosted();
    EXPECT_EQ(settings(), restored);
    EXPECT_EQ(field->text, "");
    EXPECT_TRUE(log.events.empty());
}

TEST_F(Restore, LoadingTheScreenEndsTheSuppression) {
    load();
    controller->skv_restoreDefaults();
    controller->viewDidLoad();
    EXPECT_FALSE(controller->skv_suppressControlActions);
}

TEST_F(Restore, ASecondRestoreStartsAHalfSecondOfItsOwn) {
    load();
    controller->skv_restoreDefaults();
    advance(0.25);
    controller->skv_restoreDefaults();
    advance(0.375);
    EXPECT_TRUE(controller->skv_suppressControlActions);
    advance(0.125);
    EXPECT_FALSE(controller->skv_suppressControlActions);
}

TEST_F(Restore, DropsAnImageThatIsStillBeingMadeSmaller) {
    load();
    files.files.writeAtomically("/photo", std::string(kCustomImageByteLimit + 1, 'x'));
    controller->documentPicker({"/photo"});
    controller->skv_restoreDefaults();
    loop.runPosted();
    EXPECT_EQ(log.whats(), (Strings{"importing", "imported", "reloadData", kWrite}));
    imageShrinker.answer("png");
    loop.runPosted();
    EXPECT_EQ(log.events.size(), 4U);
    EXPECT_EQ(settings().at("imagePath"), PropertyValue(""));
    EXPECT_FALSE(files.fileExistsAtPath(directory.customImageFile()));
}

}  // namespace
}  // namespace skavlo
