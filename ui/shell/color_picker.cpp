#include "ui/shell/color_picker.h"

#include <algorithm>

#include "ui/shell/colours.h"

namespace skavlo {
namespace {

double within(double fraction) {
    return std::clamp(fraction, 0.0, 1.0);
}

QColor fromHsv(double hue, double saturation, double brightness) {
    return QColor::fromHsvF(static_cast<float>(hue), static_cast<float>(saturation),
                            static_cast<float>(brightness));
}

}  // namespace

ColorPicker::ColorPicker(ColorWellControl& well, QObject* parent)
    : QObject(parent), well_(&well), title_(well.title()), color_(well.selectedColor()) {
    rememberHsv();
}

QColor ColorPicker::color() const {
    return toQColor(color_);
}

QColor ColorPicker::pureHue() const {
    return fromHsv(hue_, 1, 1);
}

QColor ColorPicker::opaque() const {
    return toQColor({color_.red, color_.green, color_.blue, 1});
}

QString ColorPicker::hex() const {
    return hexText(color_);
}

void ColorPicker::rememberHsv() {
    const QColor hsv = opaque().toHsv();
    brightness_ = static_cast<double>(hsv.valueF());
    if (brightness_ > 0) saturation_ = static_cast<double>(hsv.hsvSaturationF());
    if (hsv.hsvHueF() >= 0) hue_ = static_cast<double>(hsv.hsvHueF());
}

void ColorPicker::choose(const Colour& color) {
    color_ = color;
    emit changed();
    if (well_) well_->choose(color_);
}

void ColorPicker::chooseHsv() {
    const QColor rgb = fromHsv(hue_, saturation_, brightness_).toRgb();
    choose({static_cast<double>(rgb.redF()), static_cast<double>(rgb.greenF()),
            static_cast<double>(rgb.blueF()), color_.alpha});
}

void ColorPicker::setHue(double hue) {
    hue_ = within(hue);
    chooseHsv();
}

void ColorPicker::setSpectrum(double saturation, double brightness) {
    saturation_ = within(saturation);
    brightness_ = within(brightness);
    chooseHsv();
}

void ColorPicker::setRed(double red) {
    color_.red = within(red);
    rememberHsv();
    choose(color_);
}

void ColorPicker::setGreen(double green) {
    color_.green = within(green);
    rememberHsv();
    choose(color_);
}

void ColorPicker::setBlue(double blue) {
    color_.blue = within(blue);
    rememberHsv();
    choose(color_);
}

void ColorPicker::setAlpha(double alpha) {
    color_.alpha = within(alpha);
    choose(color_);
}

bool ColorPicker::setHex(const QString& text) {
    const std::optional<Colour> color = colourFromHex(text, color_.alpha);
    if (!color) return false;
    color_ = *color;
    rememberHsv();
    choose(color_);
    return true;
}

}  // namespace skavlo
