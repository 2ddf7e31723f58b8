// The table's data source: every cell is built anew from the settings.
#include <array>
#include <functional>

#include "settings/loose_value.h"
#include "ui/setting_tags.h"
#include "ui/settings_rows.h"
#include "ui/settings_view_controller.h"

namespace skavlo {

namespace {

constexpr std::array kSectionTitles = {TextId::launchSettings, TextId::touchSettings,
                                       TextId::displaySettings};

// Empty when the value is no string.
std::string stringOf(const PropertyDictionary& settings, const char* key) {
    const PropertyValue* value = lookUp(settings, key);
    const auto* text = value ? value->as<std::string>() : nullptr;
    return text ? *text : std::string();
}

}  // namespace

int SettingsViewController::numberOfSections() const {
    return static_cast<int>(kSectionTitles.size());
}

int SettingsViewController::numberOfRowsInSection(int section) const {
    return static_cast<int>(rowsOfSection(section, skv_settings).size());
}

std::optional<std::string> SettingsViewController::titleForHeaderInSection(int section) const {
    if (section < 0 || section >= numberOfSections()) return std::nullopt;
    return L(kSectionTitles[static_cast<std::size_t>(section)]);
}

std::unique_ptr<TableViewCell> SettingsViewController::cellForRowAtIndexPath(IndexPath indexPath) {
    auto cell = std::make_unique<TableViewCell>();
    const auto rows = rowsOfSection(indexPath.section, skv_settings);
    // A row that does not exist stays an empty cell.
    if (indexPath.row >= 0 && indexPath.row < static_cast<int>(rows.size())) {
        fillCell(*cell, rows[static_cast<std::size_t>(indexPath.row)]);
    }
    return cell;
}

void SettingsViewController::skv_reloadTable() {
    view_.reloadData();
}

void SettingsViewController::fillCell(TableViewCell& cell, const SettingsRow& row) {
    if (row.kind != RowKind::slider) cell.textLabel = L(row.text);
    switch (row.kind) {
        case RowKind::enableSwitch:
            cell.accessoryView = skv_enableSwitch;
            break;
        case RowKind::recordOnlySwitch:
            cell.accessoryView = skv_recordOnlySwitch;
            break;
        case RowKind::multiTouchSwitch:
            cell.accessoryView = skv_multiTouchSwitch;
            break;
        case RowKind::singleTouchSwitch:
            cell.accessoryView = skv_singleTouchSwitch;
            break;
        case RowKind::displayMode:
            cell.selectionStyle = CellSelectionStyle::standard;
            if (row.tag == displayModeOf(skv_settings)) cell.accessoryView = Checkmark{};
            break;
        case RowKind::colorWell:
            cell.accessoryView = makeColorWell(row);
            break;
        case RowKind::slider:
            cell.sliderRow = makeSliderRow(row);
            break;
        case RowKind::displaySwitch:
            cell.accessoryView = makeDisplaySwitch(row);
            break;
        case RowKind::imagePicker:
            cell.textColor = TextColor::systemBlue;
            cell.selectionStyle = CellSelectionStyle::standard;
            cell.accessoryView = makeThumbnail();
            break;
        case RowKind::emojiField:
            cell.accessoryView = makeEmojiField();
            break;
        case RowKind::restore:
            cell.textColor = TextColor::systemRed;
            cell.textAlignment = TextAlignment::center;
            cell.selectionStyle = CellSelectionStyle::standard;
            break;
    }
}

std::shared_ptr<SliderRow> SettingsViewController::makeSliderRow(const SettingsRow& row) {
    using Self = SettingsViewController;
    const SliderRange range = sliderRangeForTag(row.tag);
    const float value = floatValue(lookUp(skv_settings, settingKeyForTag(row.tag)));
    auto result =
        std::make_shared<SliderRow>(L(row.text), row.tag, range.minimum, range.maximum, value);
    result->valueChanged = whileAlive(std::bind_front(&Self::skv_sliderValueChanged, this));
    result->editingEnded = whileAlive(std::bind_front(&Self::skv_sliderEditingEnded, this));
    result->minusTapped = whileAlive(std::bind_front(&Self::skv_stepperMinusTapped, this));
    result->plusTapped = whileAlive(std::bind_front(&Self::skv_stepperPlusTapped, this));
    return result;
}

AccessoryView SettingsViewController::makeColorWell(const SettingsRow& row) {
    using Self = SettingsViewController;
    struct ColorAction {
        std::string_view key;
        void (Self::*action)(const ColorWell&);
    };
    constexpr ColorAction kActions[] = {
        {"fillColor", &Self::skv_fillColorChanged},
        {"borderColor", &Self::skv_borderColorChanged},
        {"emojiFillColor", &Self::skv_emojiFillColorChanged},
        {"emojiBorderColor", &Self::skv_emojiBorderColorChanged},
    };
    auto well = std::make_shared<ColorWell>();
    well->key = row.key;
    well->selectedColor = skv_colorFromValue(lookUp(skv_settings, row.key), row.defaultColor);
    for (const auto& [key, action] : kActions) {
        if (key == row.key) well->valueChanged = whileAlive(std::bind_front(action, this));
    }
    return well;
}

AccessoryView SettingsViewController::makeDisplaySwitch(const SettingsRow& row) {
    auto result = std::make_shared<SKVFakeSwitch>(row.tag);
    result->setOn(boolValue(lookUp(skv_settings, switchKeyForTag(row.tag))));
    result->addTarget(
        whileAlive(std::bind_front(&SettingsViewController::skv_displaySwitchChanged, this)));
    return result;
}

AccessoryView SettingsViewController::makeEmojiField() {
    auto field = std::make_shared<EmojiField>();
    field->text = stringOf(skv_settings, "emojiString");
    field->editingDidEnd =
        whileAlive(std::bind_front(&SettingsViewController::skv_emojiFieldChanged, this));
    return field;
}

AccessoryView SettingsViewController::makeThumbnail() const {
    std::string path = stringOf(skv_settings, "imagePath");
    if (path.empty() || !system_.files.fileExistsAtPath(path)) return std::monostate();
    return Thumbnail{std::move(path)};
}

}  // namespace skavlo
