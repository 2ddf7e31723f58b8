#include "tests/unit/ui/settings_fixture.h"

namespace skavlo {
namespace {

using testing::HasSubstr;

std::string number(double value) {
    char text[32];
    std::snprintf(text, sizeof text, "%g", value);
    return text;
}

std::string describe(const Colour& colour) {
    return number(colour.red) + "," + number(colour.green) + "," + number(colour.blue) + "," +
           number(colour.alpha);
}

// A row's control in one line.
std::string describe(const TableViewCell& cell) {
    if (const auto& row = cell.sliderRow) {
        const Slider& slider = row->slider;
        return "slider " + std::to_string(slider.tag) + " from " +
               number(static_cast<double>(slider.minimumValue)) + " to " +
               number(static_cast<double>(slider.maximumValue)) + " at " +
               number(static_cast<double>(slider.value())) + " label " +
               std::to_string(row->valueLabel.tag) + " '" + row->valueLabel.text + "' buttons " +
               std::to_string(row->minus.tag) + " " + std::to_string(row->plus.tag);
    }
    const AccessoryView& accessory = cell.accessoryView;
    if (const auto* control = std::get_if<std::shared_ptr<SKVFakeSwitch>>(&accessory)) {
        return "switch " + std::to_string((*control)->tag) + ((*control)->isOn() ? " on" : " off");
    }
    if (const auto* control = std::get_if<std::shared_ptr<ColorWell>>(&accessory)) {
        return "well " + (*control)->key + " " + describe((*control)->selectedColor);
    }
    if (const auto* control = std::get_if<std::shared_ptr<EmojiField>>(&accessory)) {
        return "field '" + (*control)->text + "'";
    }
    if (const auto* thumbnail = std::get_if<Thumbnail>(&accessory)) {
        return "thumbnail " + thumbnail->path;
    }
    return std::holds_alternative<Checkmark>(accessory) ? "checkmark" : "";
}

enum class Style { plain, mode, picker, restore };

struct ExpectedRow {
    const char* zh;
    const char* en;
    std::string control;
    Style style = Style::plain;
};

const std::string kGrey = "0.66,0.66,0.66,1";
const std::string kWhite = "1,1,1,1";

std::vector<ExpectedRow> withModes(int current, std::vector<ExpectedRow> rows) {
    std::vector<ExpectedRow> result = {{"以颜色显示", "Color Mode", "", Style::mode},
                                       {"以图片显示", "Image Mode", "", Style::mode},
                                       {"以表情显示", "Emoji Mode", "", Style::mode}};
    result[static_cast<std::size_t>(current)].control = "checkmark";
    result.insert(result.end(), rows.begin(), rows.end());
    result.push_back({"恢复设置", "Restore Settings", "", Style::restore});
    return result;
}

const std::vector<ExpectedRow> kColorRows = withModes(
    0,
    {
        {"填充颜色", "Fill Color", "well fillColor " + kGrey},
        {"边框颜色", "Border Color", "well borderColor " + kWhite},
        {"透明度", "Opacity", "slider 10 from 0.1 to 1 at 0.55 label 110 '0.6' buttons 1010 2010"},
        {"圆圈大小", "Circle Size",
         "slider 11 from 10 to 150 at 55 label 111 '55.0' buttons 1011 2011"},
        {"边框宽度", "Border Width",
         "slider 12 from 0 to 15 at 5 label 112 '5.0' buttons 1012 2012"},
        {"抬起缩放", "Lift Scale",
         "slider 13 from 0 to 4.5 at 2 label 113 '2.0' buttons 1013 2013"},
        {"动画持续", "Duration",
         "slider 14 from 0.1 to 10 at 0.5 label 114 '0.5' buttons 1014 2014"},
        {"跟随跟踪残影", "Trailing Effect", "switch 15 on"},
    });

const std::vector<ExpectedRow> kImageRows = withModes(
    1,
    {
        {"选择自定义图片...", "Select Custom Image...", "", Style::picker},
        {"透明度", "Opacity", "slider 20 from 0.1 to 1 at 0.55 label 120 '0.6' buttons 1020 2020"},
        {"图片大小", "Image Size",
         "slider 21 from 10 to 225 at 80 label 121 '80.0' buttons 1021 2021"},
        {"抬起缩放", "Lift Scale",
         "slider 22 from 0 to 4.5 at 2 label 122 '2.0' buttons 1022 2022"},
        {"动画持续", "Duration",
         "slider 23 from 0.1 to 10 at 0.5 label 123 '0.5' buttons 1023 2023"},
        {"跟随跟踪残影", "Trailing Effect", "switch 24 on"},
    });

const std::vector<ExpectedRow> kEmojiRowsWithoutBorder = withModes(
    2,
    {
        {"设置表情", "Set Emoji", "field '🍎'"},
        {"透明度", "Opacity", "slider 30 from 0.1 to 1 at 0.8 label 130 '0.8' buttons 1030 2030"},
        {"表情大小", "Emoji Size",
         "slider 31 from 10 to 225 at 60 label 131 '60.0' buttons 1031 2031"},
        {"抬起缩放", "Lift Scale",
         "slider 32 from 0 to 4.5 at 2 label 132 '2.0' buttons 1032 2032"},
        {"动画持续", "Duration",
         "slider 33 from 0.1 to 10 at 0.5 label 133 '0.5' buttons 1033 2033"},
        {"颜色边框", "Color Border", "switch 35 off"},
        {"跟随跟踪残影", "Trailing Effect", "switch 34 on"},
    });

const std::vector<ExpectedRow> kEmojiRowsWithBorder = withModes(
    2,
    {
        {"设置表情", "Set Emoji", "field '🍎'"},
        {"透明度", "Opacity", "slider 30 from 0.1 to 1 at 0.8 label 130 '0.8' buttons 1030 2030"},
        {"表情大小", "Emoji Size",
         "slider 31 from 10 to 225 at 60 label 131 '60.0' buttons 1031 2031"},
        {"抬起缩放", "Lift Scale",
         "slider 32 from 0 to 4.5 at 2 label 132 '2.0' buttons 1032 2032"},
        {"动画持续", "Duration",
         "slider 33 from 0.1 to 10 at 0.5 label 133 '0.5' buttons 1033 2033"},
        {"颜色边框", "Color Border", "switch 35 on"},
        {"表情填充色", "Emoji Fill", "well emojiFillColor " + kGrey},
        {"表情边框色", "Emoji Border", "well emojiBorderColor " + kWhite},
        {"填充透明度", "Fill Opacity",
         "slider 37 from 0 to 1 at 0.5 label 137 '0.5' buttons 1037 2037"},
        {"边框透明度", "Border Opacity",
         "slider 36 from 0 to 1 at 0.5 label 136 '0.5' buttons 1036 2036"},
        {"边框宽度", "Border Width",
         "slider 38 from 0 to 15 at 5 label 138 '5.0' buttons 1038 2038"},
        {"跟随跟踪残影", "Trailing Effect", "switch 34 on"},
    });

const std::vector<ExpectedRow> kLaunchRows = {{"开启 Skavlo", "Enable Skavlo", "switch 0 off"}};
const std::vector<ExpectedRow> kTouchRows = {{"仅录屏显示", "Show in Record Only", "switch 0 off"},
                                             {"多指显示", "Multi-Touch", "switch 0 on"},
                                             {"单指显示", "Single-Touch", "switch 0 off"}};

class SettingsTable : public SettingsFixture {
  protected:
    void show(int mode, bool border = false) {
        settings()["displayMode"] = mode;
        settings()["emojiShowBorder"] = border;
    }
    void expectRows(int section, const std::vector<ExpectedRow>& expected) {
        for (const bool english : {false, true}) {
            settings()["isEnglish"] = english;
            ASSERT_EQ(controller->numberOfRowsInSection(section),
                      static_cast<int>(expected.size()));
            for (std::size_t row = 0; row < expected.size(); ++row) {
                const auto found = cell(section, static_cast<int>(row));
                SCOPED_TRACE(expected[row].en);
                expectCell(*found, expected[row], english);
            }
        }
    }
    static void expectCell(const TableViewCell& found, const ExpectedRow& row, bool english) {
        const std::string text = english ? row.en : row.zh;
        EXPECT_EQ(found.textLabel, found.sliderRow ? "" : text);
        if (found.sliderRow) {
            EXPECT_EQ(found.sliderRow->name, text);
        }
        EXPECT_EQ(describe(found), row.control);
        EXPECT_EQ(found.textColor, row.style == Style::restore  ? TextColor::systemRed
                                   : row.style == Style::picker ? TextColor::systemBlue
                                                                : TextColor::label);
        EXPECT_EQ(found.textAlignment,
                  row.style == Style::restore ? TextAlignment::center : TextAlignment::natural);
        EXPECT_EQ(found.selectionStyle, row.style == Style::plain ? CellSelectionStyle::none
                                                                  : CellSelectionStyle::standard);
    }
};

TEST_F(SettingsTable, HasThreeSectionsWithHeaders) {
    load();
    EXPECT_EQ(controller->numberOfSections(), 3);
    const char* headers[][2] = {{"启动设置", "Launch Settings"},
                                {"触摸设置", "Touch Settings"},
                                {"显示设置", "Display Settings"}};
    for (const bool english : {false, true}) {
        settings()["isEnglish"] = english;
        for (int section = 0; section < 3; ++section) {
            EXPECT_EQ(controller->titleForHeaderInSection(section), headers[section][english]);
        }
    }
}

TEST_F(SettingsTable, AnyOtherSectionIsEmptyAndHasNoHeader) {
    load();
    for (const int section : {-1, 3, 100}) {
        EXPECT_EQ(controller->titleForHeaderInSection(section), std::nullopt);
        EXPECT_EQ(controller->numberOfRowsInSection(section), 0);
    }
}

TEST_F(SettingsTable, LaunchAndTouchRows) {
    load();
    expectRows(kLaunchSection, kLaunchRows);
    expectRows(kTouchSection, kTouchRows);
}

TEST_F(SettingsTable, ColorRows) {
    load();
    expectRows(kDisplaySection, kColorRows);
    EXPECT_EQ(kColorRows.size(), 12U);
}

TEST_F(SettingsTable, ImageRows) {
    load();
    show(1);
    expectRows(kDisplaySection, kImageRows);
    EXPECT_EQ(kImageRows.size(), 10U);
}

TEST_F(SettingsTable, EmojiRowsWithoutBorder) {
    load();
    show(2);
    expectRows(kDisplaySection, kEmojiRowsWithoutBorder);
    EXPECT_EQ(kEmojiRowsWithoutBorder.size(), 11U);
}

TEST_F(SettingsTable, EmojiRowsWithBorder) {
    load();
    show(2, true);
    expectRows(kDisplaySection, kEmojiRowsWithBorder);
    EXPECT_EQ(kEmojiRowsWithBorder.size(), 16U);
}

TEST_F(SettingsTable, TheFourSwitchesAreTheScreensOwn) {
    load();
    const auto accessory = [this](int section, int row) {
        return std::get<std::shared_ptr<SKVFakeSwitch>>(cell(section, row)->accessoryView);
    };
    EXPECT_EQ(accessory(0, 0), controller->skv_enableSwitch);
    EXPECT_EQ(accessory(1, 0), controller->skv_recordOnlySwitch);
    EXPECT_EQ(accessory(1, 1), controller->skv_multiTouchSwitch);
    EXPECT_EQ(accessory(1, 2), controller->skv_singleTouchSwitch);
}

TEST_F(SettingsTable, EveryOtherControlIsMadeAnew) {
    load();
    EXPECT_NE(displayCell(5)->sliderRow, displayCell(5)->sliderRow);
    EXPECT_NE(displayControl<ColorWell>(3), displayControl<ColorWell>(3));
    EXPECT_NE(displayControl<SKVFakeSwitch>(10), displayControl<SKVFakeSwitch>(10));
}

TEST_F(SettingsTable, ChangingTheModeMovesTheRestoreRow) {
    load();
    EXPECT_EQ(displayCell(11)->textColor, TextColor::systemRed);
    controller->didSelectRowAtIndexPath({kDisplaySection, 2});
    EXPECT_EQ(controller->numberOfRowsInSection(kDisplaySection), 11);
    EXPECT_EQ(displayCell(10)->textColor, TextColor::systemRed);
}

TEST_F(SettingsTable, ColorBorderInsertsFiveRowsAndTakesThemAway) {
    load({{"displayMode", 2}});
    displayControl<SKVFakeSwitch>(8)->touchUpInside();
    EXPECT_EQ(controller->numberOfRowsInSection(kDisplaySection), 16);
    EXPECT_THAT(describe(*displayCell(9)), HasSubstr("well emojiFillColor"));
    EXPECT_THAT(describe(*displayCell(13)), HasSubstr("slider 38"));
    EXPECT_THAT(describe(*displayCell(14)), HasSubstr("switch 34"));
    displayControl<SKVFakeSwitch>(8)->touchUpInside();
    EXPECT_EQ(controller->numberOfRowsInSection(kDisplaySection), 11);
    EXPECT_THAT(describe(*displayCell(9)), HasSubstr("switch 34"));
}

TEST_F(SettingsTable, AnUnknownModeHasAHeaderAndNoRows) {
    load();
    for (const int mode : {-1, 3, 100}) {
        show(mode);
        EXPECT_EQ(controller->numberOfRowsInSection(kDisplaySection), 0);
        EXPECT_EQ(controller->titleForHeaderInSection(kDisplaySection), "显示设置");
    }
}

TEST_F(SettingsTable, ARowThatDoesNotExistIsAnEmptyCell) {
    load();
    for (const IndexPath path : {IndexPath{2, 12}, IndexPath{2, -1}, IndexPath{9, 0}}) {
        const auto found = controller->cellForRowAtIndexPath(path);
        EXPECT_EQ(found->textLabel, "");
        EXPECT_EQ(describe(*found), "");
    }
}

TEST_F(SettingsTable, TheThumbnailNeedsAPathAndItsFile) {
    load();
    show(1);
    EXPECT_EQ(describe(*displayCell(3)), "");
    settings()["imagePath"] = "/image";
    EXPECT_EQ(describe(*displayCell(3)), "");
    files.files.writeAtomically("/image", "data");
    EXPECT_EQ(describe(*displayCell(3)), "thumbnail /image");
    settings()["imagePath"] = 1;
    EXPECT_EQ(describe(*displayCell(3)), "");
}

TEST_F(SettingsTable, AStoredValueOutOfRangeIsClampedByTheSlider) {
    load({{"colorSize", 200}, {"colorAlpha", -1}, {"colorLiftScale", "3.5"}});
    EXPECT_THAT(describe(*displayCell(6)), HasSubstr("at 150 label 111 '150.0'"));
    EXPECT_THAT(describe(*displayCell(5)), HasSubstr("at 0.1 label 110 '0.1'"));
    EXPECT_THAT(describe(*displayCell(8)), HasSubstr("at 3.5 label 113 '3.5'"));
    EXPECT_EQ(settings().at("colorSize"), PropertyValue(200)) << "showing changes nothing";
}

TEST_F(SettingsTable, FillOpacityComesFirstAndHasTheLaterTag) {
    load();
    show(2, true);
    EXPECT_EQ(displayCell(11)->sliderRow->minus.tag, 1037);
    EXPECT_EQ(displayCell(12)->sliderRow->minus.tag, 1036);
}

TEST_F(SettingsTable, AnEmojiThatIsNoTextShowsAsNone) {
    load({{"displayMode", 2}, {"emojiString", 5}});
    EXPECT_EQ(describe(*displayCell(3)), "field ''");
}

TEST_F(SettingsTable, ReloadTableReloads) {
    load();
    controller->skv_reloadTable();
    EXPECT_EQ(log.whats(), Strings{"reloadData"});
}

}  // namespace
}  // namespace skavlo
