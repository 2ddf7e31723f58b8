// The tags by which controls and settings find each other. They are fixed, whatever the order of
// the rows.
#pragma once

namespace skavlo {

struct SliderRange {
    float minimum = 0;
    float maximum = 0;
};

// Of sliders: 29 tags from 10 to 38, some of them without a key. The empty string for every other.
const char* settingKeyForTag(int tag);

// Of switches: 15, 24, 34 and 35. The empty string for every other tag.
const char* switchKeyForTag(int tag);
inline constexpr int kEmojiShowBorderTag = 35;

// From 0 to 0 for what is no slider's tag.
SliderRange sliderRangeForTag(int tag);

// Of "-" and "+"; 0.1 for every tag that has no other.
float sliderStepForTag(int tag);

}  // namespace skavlo
