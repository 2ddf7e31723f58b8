#include "ui/slider_row.h"

#include <algorithm>
#include <cstdio>
#include <utility>

namespace skavlo {

void Slider::setValue(float value, bool animated) {
    // The negated comparison takes care of what is not a number.
    value_ = !(value > minimumValue) ? minimumValue : std::min(value, maximumValue);
    if (superview.didChange) superview.didChange(animated);
}

SliderRow::SliderRow(std::string title, int sliderTag, float minimum, float maximum, float value)
    : name(std::move(title)),
      minus{sliderTag + kMinusTagOffset, *this},
      slider(*this, sliderTag, minimum, maximum),
      plus{sliderTag + kPlusTagOffset, *this},
      valueLabel{sliderTag + kValueLabelTagOffset, {}} {
    slider.setValue(value);
    valueLabel.text = sliderValueText(slider.value());
}

Slider* SliderRow::sliderWithTag(int tag) {
    return slider.tag == tag ? &slider : nullptr;
}

ValueLabel* SliderRow::valueLabelWithTag(int tag) {
    return valueLabel.tag == tag ? &valueLabel : nullptr;
}

std::string sliderValueText(float value) {
    char text[64];
    std::snprintf(text, sizeof text, "%.1f", static_cast<double>(value));
    return text;
}

}  // namespace skavlo
