#pragma once

#include <functional>
#include <string>

namespace skavlo {

class SliderRow;

class Slider {
  public:
    Slider(SliderRow& row, int itsTag, float minimum, float maximum)
        : tag(itsTag), minimumValue(minimum), maximumValue(maximum), superview(row) {}

    [[nodiscard]] float value() const { return value_; }
    // Clamped into the range. Animated only tells the view how to get there; sends no event.
    void setValue(float value, bool animated = false);

    const int tag;
    const float minimumValue;
    const float maximumValue;
    SliderRow& superview;

  private:
    float value_ = 0;
};

// A "-" or "+" beside a slider.
struct StepperButton {
    int tag;
    SliderRow& superview;
};

struct ValueLabel {
    int tag = 0;
    std::string text;
};

// A slider with its name, its value, "-" and "+". Its parts find each other by tag, through the
// row: slider T, value label T + 100, "-" T + 1000, "+" T + 2000.
class SliderRow {
  public:
    static constexpr int kValueLabelTagOffset = 100;
    static constexpr int kMinusTagOffset = 1000;
    static constexpr int kPlusTagOffset = 2000;

    SliderRow(std::string title, int sliderTag, float minimum, float maximum, float value);
    SliderRow(const SliderRow&) = delete;
    SliderRow& operator=(const SliderRow&) = delete;

    // Null when the row has no such part.
    [[nodiscard]] Slider* sliderWithTag(int tag);
    [[nodiscard]] ValueLabel* valueLabelWithTag(int tag);

    std::string name;  // the row's label
    StepperButton minus;
    Slider slider;
    StepperButton plus;
    ValueLabel valueLabel;

    // Set by the controller.
    std::function<void(Slider& sender)> valueChanged;
    std::function<void(Slider& sender)> editingEnded;  // let go, inside or outside
    std::function<void(StepperButton& sender)> minusTapped;
    std::function<void(StepperButton& sender)> plusTapped;
    // Set by the view: the slider's value or the label's text has changed.
    std::function<void(bool animated)> didChange;
};

// One decimal, whatever the unit: "55.0".
std::string sliderValueText(float value);

}  // namespace skavlo
