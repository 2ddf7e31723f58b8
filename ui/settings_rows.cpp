#include "ui/settings_rows.h"

#include <algorithm>
#include <iterator>
#include <span>

#include "settings/loose_value.h"
#include "ui/settings_view_controller.h"

namespace skavlo {

namespace {

constexpr SettingsRow kLaunchRows[] = {{RowKind::enableSwitch, TextId::enableSkavlo}};

constexpr SettingsRow kTouchRows[] = {
    {RowKind::recordOnlySwitch, TextId::showInRecordOnly},
    {RowKind::multiTouchSwitch, TextId::multiTouch},
    {RowKind::singleTouchSwitch, TextId::singleTouch},
};

constexpr SettingsRow kModeRows[] = {
    {RowKind::displayMode, TextId::colorMode, static_cast<int>(DisplayMode::color)},
    {RowKind::displayMode, TextId::imageMode, static_cast<int>(DisplayMode::image)},
    {RowKind::displayMode, TextId::emojiMode, static_cast<int>(DisplayMode::emoji)},
};

constexpr SettingsRow kColorRows[] = {
    {RowKind::colorWell, TextId::fillColor, 0, "fillColor", kLightGrayColor},
    {RowKind::colorWell, TextId::borderColor, 0, "borderColor", kWhiteColor},
    {RowKind::slider, TextId::opacity, 10},
    {RowKind::slider, TextId::circleSize, 11},
    {RowKind::slider, TextId::borderWidth, 12},
    {RowKind::slider, TextId::liftScale, 13},
    {RowKind::slider, TextId::duration, 14},
    {RowKind::displaySwitch, TextId::trailingEffect, 15},
};

constexpr SettingsRow kImageRows[] = {
    {RowKind::imagePicker, TextId::selectCustomImage},
    {RowKind::slider, TextId::opacity, 20},
    {RowKind::slider, TextId::imageSize, 21},
    {RowKind::slider, TextId::liftScale, 22},
    {RowKind::slider, TextId::duration, 23},
    {RowKind::displaySwitch, TextId::trailingEffect, 24},
};

constexpr SettingsRow kEmojiRows[] = {
    {RowKind::emojiField, TextId::setEmoji},
    {RowKind::slider, TextId::opacity, 30},
    {RowKind::slider, TextId::emojiSize, 31},
    {RowKind::slider, TextId::liftScale, 32},
    {RowKind::slider, TextId::duration, 33},
    {RowKind::displaySwitch, TextId::colorBorder, 35},
    {RowKind::colorWell, TextId::emojiFill, 0, "emojiFillColor", kLightGrayColor, true},
    {RowKind::colorWell, TextId::emojiBorder, 0, "emojiBorderColor", kWhiteColor, true},
    {RowKind::slider, TextId::fillOpacity, 37, "", {}, true},
    {RowKind::slider, TextId::borderOpacity, 36, "", {}, true},
    {RowKind::slider, TextId::borderWidth, 38, "", {}, true},
    {RowKind::displaySwitch, TextId::trailingEffect, 34},
};

constexpr SettingsRow kRestoreRow{RowKind::restore, TextId::restoreSettings};

std::span<const SettingsRow> ownRowsOfMode(int mode) {
    switch (static_cast<DisplayMode>(mode)) {
        case DisplayMode::color:
            return kColorRows;
        case DisplayMode::image:
            return kImageRows;
        case DisplayMode::emoji:
            return kEmojiRows;
    }
    return {};
}

std::vector<SettingsRow> displayRows(const PropertyDictionary& settings) {
    const auto own = ownRowsOfMode(displayModeOf(settings));
    if (own.empty()) return {};
    const bool border = boolValue(lookUp(settings, "emojiShowBorder"));
    std::vector<SettingsRow> rows(std::begin(kModeRows), std::end(kModeRows));
    std::ranges::copy_if(own, std::back_inserter(rows), [border](const SettingsRow& row) {
        return border || !row.onlyWithEmojiBorder;
    });
    rows.push_back(kRestoreRow);
    return rows;
}

}  // namespace

int displayModeOf(const PropertyDictionary& settings) {
    return intValue(lookUp(settings, "displayMode"));
}

std::vector<SettingsRow> rowsOfSection(int section, const PropertyDictionary& settings) {
    switch (section) {
        case kLaunchSection:
            return {std::begin(kLaunchRows), std::end(kLaunchRows)};
        case kTouchSection:
            return {std::begin(kTouchRows), std::end(kTouchRows)};
        case kDisplaySection:
            return displayRows(settings);
        default:
            return {};
    }
}

int restoreRowIndex(const PropertyDictionary& settings) {
    const auto rows = displayRows(settings);
    return rows.empty() ? 0 : static_cast<int>(rows.size()) - 1;
}

}  // namespace skavlo
