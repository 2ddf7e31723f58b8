// What the controls of the display section do to the settings.
#include <algorithm>
#include <cmath>

#include "settings/loose_value.h"
#include "ui/setting_tags.h"
#include "ui/settings_rows.h"
#include "ui/settings_view_controller.h"

namespace skavlo {

void SettingsViewController::skv_displayModeChanged(const SKVFakeSwitch& sender) {
    if (skv_suppressControlActions) return;
    if (displayModeOf(skv_settings) == sender.tag) return;
    skv_settings["displayMode"] = sender.tag;
    view_.reloadSection(kDisplaySection);
    skv_saveSettingsAndNotify();
}

void SettingsViewController::storeColor(const char* key, const ColorWell& sender) {
    if (skv_suppressControlActions) return;
    skv_settings[key] = skv_arrayFromColor(sender.selectedColor);
    skv_saveSettingsAndNotify();
}

void SettingsViewController::skv_fillColorChanged(const ColorWell& sender) {
    storeColor("fillColor", sender);
}

void SettingsViewController::skv_borderColorChanged(const ColorWell& sender) {
    storeColor("borderColor", sender);
}

void SettingsViewController::skv_emojiFillColorChanged(const ColorWell& sender) {
    storeColor("emojiFillColor", sender);
}

void SettingsViewController::skv_emojiBorderColorChanged(const ColorWell& sender) {
    storeColor("emojiBorderColor", sender);
}

void SettingsViewController::skv_sliderValueChanged(Slider& sender) {
    if (skv_suppressControlActions) return;
    SliderRow& row = sender.superview;
    if (ValueLabel* label = row.valueLabelWithTag(sender.tag + SliderRow::kValueLabelTagOffset)) {
        label->text = sliderValueText(sender.value());
        if (row.didChange) row.didChange(false);
    }
    skv_settings[settingKeyForTag(sender.tag)] = static_cast<double>(sender.value());
}

void SettingsViewController::skv_sliderEditingEnded(Slider& /*sender*/) {
    if (skv_suppressControlActions) return;
    skv_saveSettingsAndNotify();
}

void SettingsViewController::skv_stepperMinusTapped(StepperButton& sender) {
    skv_stepSlider(sender, false);
}

void SettingsViewController::skv_stepperPlusTapped(StepperButton& sender) {
    skv_stepSlider(sender, true);
}

void SettingsViewController::skv_stepSlider(StepperButton& button, bool isPlus) {
    if (skv_suppressControlActions) return;
    const int tag = button.tag - (isPlus ? SliderRow::kPlusTagOffset : SliderRow::kMinusTagOffset);
    Slider* slider = button.superview.sliderWithTag(tag);
    if (!slider) return;
    const float step = sliderStepForTag(tag);
    const float value = slider->value() + (isPlus ? step : -step);
    constexpr float kDecimal = 10;
    const float rounded = std::round(value * kDecimal) / kDecimal;
    slider->setValue(std::max(std::min(rounded, slider->maximumValue), slider->minimumValue), true);
    skv_sliderValueChanged(*slider);
    skv_sliderEditingEnded(*slider);
}

// A switch of an unknown tag stores its value under the empty key.
void SettingsViewController::skv_displaySwitchChanged(const SKVFakeSwitch& sender) {
    if (skv_suppressControlActions) return;
    skv_settings[switchKeyForTag(sender.tag)] = sender.isOn();
    if (sender.tag == kEmojiShowBorderTag) view_.reloadSection(kDisplaySection);
    skv_saveSettingsAndNotify();
}

void SettingsViewController::skv_emojiFieldChanged(EmojiField& sender) {
    if (skv_suppressControlActions) return;
    if (sender.text.empty()) {
        sender.text = "🍎";
        if (sender.didChange) sender.didChange();
    }
    skv_settings["emojiString"] = sender.text;
    skv_saveSettingsAndNotify();
    if (sender.resignFirstResponder) sender.resignFirstResponder();
}

}  // namespace skavlo
