// One row of the settings table, as data. Every reload makes new ones.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <variant>

#include "settings/colour.h"
#include "ui/skv_fake_switch.h"
#include "ui/slider_row.h"

namespace skavlo {

struct IndexPath {
    int section = 0;
    int row = 0;
    bool operator==(const IndexPath&) const = default;
};

// The view knows their light and dark forms.
enum class TextColor { label, systemRed, systemBlue };
enum class TextAlignment { natural, center };
enum class CellSelectionStyle { none = 0, standard = 3 };

struct Checkmark {};

struct ColorWell {
    std::string key;
    Colour selectedColor;
    std::function<void(ColorWell& sender)> valueChanged;  // also for every step of a drag
};

struct EmojiField {
    std::string text;
    // Editing ended, by Return or by the focus moving on.
    std::function<void(EmojiField& sender)> editingDidEnd;
    // Set by the view: show `text` again; give up the focus.
    std::function<void()> didChange;
    std::function<void()> resignFirstResponder;
};

struct Thumbnail {
    std::string path;  // of an image file
};

using AccessoryView =
    std::variant<std::monostate, Checkmark, std::shared_ptr<SKVFakeSwitch>,
                 std::shared_ptr<ColorWell>, std::shared_ptr<EmojiField>, Thumbnail>;

struct TableViewCell {
    std::string textLabel;  // empty in a slider row, which has a label of its own
    TextColor textColor = TextColor::label;
    TextAlignment textAlignment = TextAlignment::natural;
    CellSelectionStyle selectionStyle = CellSelectionStyle::none;
    AccessoryView accessoryView;
    std::shared_ptr<SliderRow> sliderRow;  // null in every other row
};

}  // namespace skavlo
