#include "tests/unit/ui/settings_fixture.h"

namespace skavlo {
namespace {

class RowSelection : public SettingsFixture {
  protected:
    // What a tap on the row does beyond ending the editing and deselecting the row.
    Strings tapRow(int section, int row) {
        log.restart();
        controller->didSelectRowAtIndexPath({section, row});
        loop.runPosted();
        Strings whats = log.whats();
        const std::string place = std::to_string(section) + " " + std::to_string(row);
        EXPECT_GE(whats.size(), 2U);
        EXPECT_EQ(whats[0], "endEditing");
        EXPECT_EQ(whats[1], "deselectRow " + place + " animated");
        whats.erase(whats.begin(), whats.begin() + 2);
        return whats;
    }
    void show(int mode, bool border = false) {
        settings()["displayMode"] = mode;
        settings()["emojiShowBorder"] = border;
    }
    const Strings nothing{};
    const Strings restoreAlert{"alert 恢复设置"};
};

TEST_F(RowSelection, LaunchAndTouchRowsOnlyLoseTheirHighlight) {
    load();
    for (int row = 0; row < 4; ++row) {
        EXPECT_EQ(tapRow(0, row), nothing);
        EXPECT_EQ(tapRow(1, row), nothing);
        EXPECT_EQ(tapRow(3, row), nothing);
    }
}

TEST_F(RowSelection, TheCurrentModeStays) {
    load();
    for (int mode = 0; mode < 3; ++mode) {
        show(mode);
        EXPECT_EQ(tapRow(2, mode), nothing);
    }
}

TEST_F(RowSelection, AnotherModeIsChosenOnce) {
    load();
    show(2);
    EXPECT_EQ(tapRow(2, 1), (Strings{"reloadSection 2", kWrite}));
    EXPECT_EQ(settings().at("displayMode"), PropertyValue(1));
    EXPECT_EQ(tapRow(2, 0), (Strings{"reloadSection 2", kWrite}));
    EXPECT_EQ(settings().at("displayMode"), PropertyValue(0));
    EXPECT_EQ(tapRow(2, 2), (Strings{"reloadSection 2", kWrite}));
    EXPECT_EQ(settings().at("displayMode"), PropertyValue(2));
}

TEST_F(RowSelection, RowThreeOpensThePickerInImageModeOnly) {
    load();
    show(1);
    EXPECT_EQ(tapRow(2, 3), Strings{"picker"});
    show(0);
    EXPECT_EQ(tapRow(2, 3), nothing);
    show(2);
    EXPECT_EQ(tapRow(2, 3), nothing);
}

TEST_F(RowSelection, TheLastRowAndNoOtherAsksForTheRestore) {
    load();
    struct Mode {
        int mode;
        bool border;
        int restoreRow;
    };
    for (const Mode& mode :
         {Mode{0, false, 11}, Mode{1, false, 9}, Mode{2, false, 10}, Mode{2, true, 15}}) {
        show(mode.mode, mode.border);
        for (int row = 4; row < 18; ++row) {
            EXPECT_EQ(tapRow(2, row), row == mode.restoreRow ? restoreAlert : nothing)
                << mode.mode << " " << row;
        }
    }
}

TEST_F(RowSelection, AnUnknownModeHasItsRestoreAtRowZero) {
    load();
    show(7);
    EXPECT_EQ(tapRow(2, 0), restoreAlert);
    EXPECT_EQ(tapRow(2, 1), (Strings{"reloadSection 2", kWrite}));
    EXPECT_EQ(settings().at("displayMode"), PropertyValue(1));
}

TEST_F(RowSelection, TheRestoreAlertInBothLanguages) {
    load();
    for (const bool english : {false, true}) {
        tapRow(2, 11);
        const Alert& alert = view.alerts.back();
        EXPECT_EQ(alert.title, english ? "Restore Settings" : "恢复设置");
        EXPECT_EQ(alert.message,
                  english ? "Are you sure you want to restore all display settings to default?"
                          : "确定要将所有显示设置恢复为默认值吗？");
        ASSERT_EQ(alert.actions.size(), 2U);
        EXPECT_EQ(alert.actions[0].title, english ? "Cancel" : "取消");
        EXPECT_EQ(alert.actions[0].style, AlertActionStyle::cancel);
        EXPECT_FALSE(alert.actions[0].handler);
        EXPECT_EQ(alert.actions[1].title, english ? "Restore" : "恢复");
        EXPECT_EQ(alert.actions[1].style, AlertActionStyle::destructive);
        controller->skv_toggleLanguage();
    }
}

TEST_F(RowSelection, OnlyTheRestoreButtonRestores) {
    load({{"colorSize", 99}});
    EXPECT_EQ(tapRow(2, 11), restoreAlert);
    EXPECT_EQ(settings().at("colorSize"), PropertyValue(99));
    view.alerts.back().actions[1].handler();
    EXPECT_EQ(settings().at("colorSize"), PropertyValue(55.0));
    EXPECT_TRUE(controller->skv_suppressControlActions);
}

TEST_F(RowSelection, TheTitleFadesInBetweenFiftyAndEightyPoints) {
    load();
    const std::pair<double, double> cases[] = {{-100, 0}, {0, 0},  {50, 0}, {51.5, 0.05},
                                               {65, 0.5}, {80, 1}, {500, 1}};
    for (const auto& [scrolled, alpha] : cases) {
        controller->scrollViewDidScroll(
            {.adjustedContentInsetTop = 91, .contentOffsetY = scrolled - 91});
        EXPECT_DOUBLE_EQ(view.navTitleAlpha, alpha) << scrolled;
    }
}

}  // namespace
}  // namespace skavlo
