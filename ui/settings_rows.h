// Which rows the settings table has, as data.
#pragma once

#include <vector>

#include "platform/property_list.h"
#include "settings/colour.h"
#include "ui/table_view_cell.h"
#include "ui/text_table.h"

namespace skavlo {

enum class RowKind {
    enableSwitch,
    recordOnlySwitch,
    multiTouchSwitch,
    singleTouchSwitch,
    displayMode,    // tag: the mode
    colorWell,      // key, defaultColor
    slider,         // tag
    displaySwitch,  // tag
    imagePicker,
    emojiField,
    restore,
};

struct SettingsRow {
    RowKind kind;
    TextId text;
    int tag = 0;
    const char* key = "";
    Colour defaultColor = {};
    bool onlyWithEmojiBorder = false;
};

// The mode that the settings name, whatever number it is.
int displayModeOf(const PropertyDictionary& settings);

// None for an unknown section, and none in the display section of an unknown mode.
std::vector<SettingsRow> rowsOfSection(int section, const PropertyDictionary& settings);

// In the display section: its last row; 0 in an unknown mode.
int restoreRowIndex(const PropertyDictionary& settings);

}  // namespace skavlo
