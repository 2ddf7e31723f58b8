#include "ui/shell/cell.h"

#include <utility>

namespace skavlo {

Cell::Cell(std::unique_ptr<TableViewCell> cell, Selection didSelect, QObject* parent)
    : QObject(parent), cell_(std::move(cell)), didSelect_(std::move(didSelect)) {
    makeControl();
}

void Cell::makeControl() {
    const AccessoryView& accessory = cell_->accessoryView;
    if (cell_->sliderRow) slider_ = new SliderControl(cell_->sliderRow, this);
    if (const auto* itsSwitch = std::get_if<std::shared_ptr<SKVFakeSwitch>>(&accessory)) {
        switchControl_ = new SwitchControl(*itsSwitch, this);
    } else if (const auto* well = std::get_if<std::shared_ptr<ColorWell>>(&accessory)) {
        well_ = new ColorWellControl(*well, text(), this);
    } else if (const auto* field = std::get_if<std::shared_ptr<EmojiField>>(&accessory)) {
        emojiField_ = new EmojiFieldControl(*field, this);
    }
}

QString Cell::text() const {
    return QString::fromStdString(cell_->textLabel);
}

bool Cell::isCentered() const {
    return cell_->textAlignment == TextAlignment::center;
}

bool Cell::isSelectable() const {
    return cell_->selectionStyle != CellSelectionStyle::none;
}

bool Cell::hasCheckmark() const {
    return std::holds_alternative<Checkmark>(cell_->accessoryView);
}

QString Cell::thumbnail() const {
    const auto* thumbnail = std::get_if<Thumbnail>(&cell_->accessoryView);
    return thumbnail ? QString::fromStdString(thumbnail->path) : QString();
}

void Cell::goOnFrom(const Cell& previous) {
    if (switchControl_ && previous.switchControl_)
        switchControl_->glideOnFrom(*previous.switchControl_);
}

void Cell::press() {
    if (!isSelectable() || highlighted_) return;
    highlighted_ = true;
    emit highlightedChanged(false);
}

void Cell::select() {
    press();
    didSelect_();
}

void Cell::deselect(bool animated) {
    if (!std::exchange(highlighted_, false)) return;
    emit highlightedChanged(animated);
}

}  // namespace skavlo
