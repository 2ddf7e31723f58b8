#include "ui/shell/controls.h"

#include <QEasingCurve>
#include <QPointF>
#include <QPointer>
#include <QTextBoundaryFinder>
#include <algorithm>
#include <utility>

#include "ui/shell/colours.h"

namespace skavlo {

namespace {

constexpr int kGlideMilliseconds = 250;

QEasingCurve easeInOut() {
    QEasingCurve curve(QEasingCurve::BezierSpline);
    curve.addCubicBezierSegment({0.42, 0}, {0.58, 1}, {1, 1});
    return curve;
}

}  // namespace

SwitchControl::SwitchControl(std::shared_ptr<SKVFakeSwitch> itsSwitch, QObject* parent)
    : QObject(parent), switch_(std::move(itsSwitch)), position_(isOn() ? 1 : 0) {
    glide_.setDuration(kGlideMilliseconds);
    glide_.setEasingCurve(easeInOut());
    connect(&glide_, &QVariantAnimation::valueChanged, this,
            [this](const QVariant& value) { moveTo(value.toDouble()); });
    // The same switch may get another row before this one is gone, hence no clearing at the end.
    switch_->didChange = [self = QPointer(this)](bool animated) {
        if (!self) return;
        self->follow(animated);
        emit self->changed();
    };
}

void SwitchControl::glideOnFrom(const SwitchControl& previous) {
    if (previous.switch_ != switch_ || previous.glide_.state() != QVariantAnimation::Running)
        return;
    glide_.setStartValue(previous.glide_.startValue());
    glide_.setEndValue(previous.glide_.endValue());
    glide_.start();
    glide_.setCurrentTime(previous.glide_.currentTime());
}

void SwitchControl::follow(bool animated) {
    const double end = isOn() ? 1 : 0;
    const bool glides = glide_.state() == QVariantAnimation::Running;
    if (animated) {
        glide_.stop();
        glide_.setStartValue(position_);
        glide_.setEndValue(end);
        glide_.start();
    } else if (!glides || glide_.endValue().toDouble() != end) {
        glide_.stop();
        moveTo(end);
    }
}

void SwitchControl::moveTo(double position) {
    if (std::exchange(position_, position) != position) emit moved();
}

void SwitchControl::tap() {
    switch_->touchUpInside();
}

SliderControl::SliderControl(std::shared_ptr<SliderRow> row, QObject* parent)
    : QObject(parent), row_(std::move(row)) {
    row_->didChange = [self = QPointer(this)](bool animated) {
        if (self) emit self->changed(animated);
    };
}

double SliderControl::fraction() const {
    return (value() - minimumValue()) / (maximumValue() - minimumValue());
}

void SliderControl::drag(double fraction) {
    const auto row = row_;
    const double range = maximumValue() - minimumValue();
    row->slider.setValue(
        static_cast<float>(minimumValue() + std::clamp(fraction, 0.0, 1.0) * range));
    if (row->valueChanged) row->valueChanged(row->slider);
    emit changed(false);  // the label's text follows the value
}

void SliderControl::endDrag() {
    const auto row = row_;
    if (row->editingEnded) row->editingEnded(row->slider);
}

void SliderControl::minus() {
    const auto row = row_;
    if (row->minusTapped) row->minusTapped(row->minus);
    emit changed(true);
}

void SliderControl::plus() {
    const auto row = row_;
    if (row->plusTapped) row->plusTapped(row->plus);
    emit changed(true);
}

ColorWellControl::ColorWellControl(std::shared_ptr<ColorWell> well, QString title, QObject* parent)
    : QObject(parent), well_(std::move(well)), title_(std::move(title)) {}

QColor ColorWellControl::color() const {
    return toQColor(well_->selectedColor);
}

QString ColorWellControl::hex() const {
    return hexText(well_->selectedColor);
}

void ColorWellControl::choose(const Colour& color) {
    well_->selectedColor = color;
    emit changed();
    if (well_->valueChanged) well_->valueChanged(*well_);
}

EmojiFieldControl::EmojiFieldControl(std::shared_ptr<EmojiField> field, QObject* parent)
    : QObject(parent), field_(std::move(field)) {
    field_->didChange = [self = QPointer(this)] {
        if (self) emit self->changed();
    };
    field_->resignFirstResponder = [self = QPointer(this)] {
        if (self) emit self->resigned();
    };
}

void EmojiFieldControl::begin() {
    if (std::exchange(editing_, true)) return;
    draft_ = text();
    emit editingChanged();
}

void EmojiFieldControl::edit(const QString& draft) {
    if (editing_) draft_ = draft;
}

void EmojiFieldControl::end() {
    if (!std::exchange(editing_, false)) return;
    const auto field = field_;
    field->text = draft_.toStdString();
    emit changed();
    emit editingChanged();
    if (field->editingDidEnd) field->editingDidEnd(*field);
    emit changed();
    emit resigned();
}

void EmojiFieldControl::replace(const QString& text) {
    begin();
    edit(text);
    end();
}

int EmojiFieldControl::characterBefore(const QString& text, int position) {
    QTextBoundaryFinder finder(QTextBoundaryFinder::Grapheme, text);
    finder.setPosition(position);
    return static_cast<int>(std::max<qsizetype>(0, finder.toPreviousBoundary()));
}

}  // namespace skavlo
