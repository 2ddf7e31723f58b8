#include "settings/default_settings.h"

namespace skavlo {

PropertyDictionary defaultSettings() {
    const PropertyArray grey{0.66, 0.66, 0.66, 1.0};
    const PropertyArray white{1.0, 1.0, 1.0, 1.0};
    return {
        {"isEnglish", false},        {"singleFingerMode", false}, {"onlyShowInRecord", false},
        {"forceHide", false},        {"displayMode", 0},          {"fillColor", grey},
        {"borderColor", white},      {"colorAlpha", 0.55},        {"colorSize", 55.0},
        {"colorBorderWidth", 5.0},   {"colorLiftScale", 2.0},     {"colorAnimDuration", 0.5},
        {"colorTracking", true},     {"imageAlpha", 0.55},        {"imageSize", 80.0},
        {"imageLiftScale", 2.0},     {"imageAnimDuration", 0.5},  {"imageTracking", true},
        {"imagePath", ""},           {"emojiString", "🍎"},        {"emojiAlpha", 0.8},
        {"emojiSize", 60.0},         {"emojiLiftScale", 2.0},     {"emojiAnimDuration", 0.5},
        {"emojiTracking", true},     {"emojiShowBorder", false},  {"emojiBorderAlpha", 0.5},
        {"emojiFillAlpha", 0.5},     {"emojiBorderWidth", 5.0},   {"emojiFillColor", grey},
        {"emojiBorderColor", white},
    };
}

}  // namespace skavlo
