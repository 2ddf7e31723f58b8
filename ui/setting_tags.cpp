#include "ui/setting_tags.h"

#include <algorithm>
#include <array>
#include <cstddef>

namespace skavlo {

namespace {

constexpr int kFirstTag = 10;
constexpr std::array<const char*, 29> kSliderKeys = {
    "colorAlpha",
    "colorSize",
    "colorBorderWidth",
    "colorLiftScale",
    "colorAnimDuration",
    "",
    "",
    "",
    "",
    "",  // 15 to 19
    "imageAlpha",
    "imageSize",
    "imageLiftScale",
    "imageAnimDuration",
    "",
    "",
    "",
    "",
    "",
    "",  // 24 to 29
    "emojiAlpha",
    "emojiSize",
    "emojiLiftScale",
    "emojiAnimDuration",
    "",
    "",  // 34 and 35
    "emojiBorderAlpha",
    "emojiFillAlpha",
    "emojiBorderWidth",
};

struct SwitchTag {
    int tag;
    const char* key;
};
constexpr SwitchTag kSwitches[] = {
    {15, "colorTracking"},
    {24, "imageTracking"},
    {34, "emojiTracking"},
    {kEmojiShowBorderTag, "emojiShowBorder"},
};

struct SliderTag {
    int tag;
    SliderRange range;
    float step;
};
constexpr float kDefaultStep = 0.1F;
constexpr SliderTag kSliders[] = {
    {10, {0.1F, 1}, kDefaultStep},
    {11, {10, 150}, 1},
    {12, {0, 15}, 0.5F},
    {13, {0, 4.5F}, kDefaultStep},
    {14, {0.1F, 10}, kDefaultStep},
    {20, {0.1F, 1}, kDefaultStep},
    {21, {10, 225}, 1},
    {22, {0, 4.5F}, kDefaultStep},
    {23, {0.1F, 10}, kDefaultStep},
    {30, {0.1F, 1}, kDefaultStep},
    {31, {10, 225}, 1},
    {32, {0, 4.5F}, kDefaultStep},
    {33, {0.1F, 10}, kDefaultStep},
    {36, {0, 1}, kDefaultStep},
    {37, {0, 1}, kDefaultStep},
    {38, {0, 15}, 0.5F},
};

const SliderTag* findSlider(int tag) {
    const auto* slider = std::ranges::find(kSliders, tag, &SliderTag::tag);
    return slider == std::end(kSliders) ? nullptr : slider;
}

}  // namespace

const char* settingKeyForTag(int tag) {
    if (tag < kFirstTag || tag >= kFirstTag + static_cast<int>(kSliderKeys.size())) return "";
    return kSliderKeys[static_cast<std::size_t>(tag - kFirstTag)];
}

const char* switchKeyForTag(int tag) {
    const auto* found = std::ranges::find(kSwitches, tag, &SwitchTag::tag);
    return found == std::end(kSwitches) ? "" : found->key;
}

SliderRange sliderRangeForTag(int tag) {
    const SliderTag* slider = findSlider(tag);
    return slider ? slider->range : SliderRange{};
}

float sliderStepForTag(int tag) {
    const SliderTag* slider = findSlider(tag);
    return slider ? slider->step : kDefaultStep;
}

}  // namespace skavlo
