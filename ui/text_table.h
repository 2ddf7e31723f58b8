// Every text that the settings application shows in two languages.
#pragma once

#include <cstddef>
#include <initializer_list>
#include <string>
#include <string_view>

namespace skavlo {

struct Text {
    const char* zh;
    const char* en;
};

enum class TextId {
    appIntro,
    appIntroMessage,
    ok,
    about,  // "%@" stands for version, author and channel, in this order
    success,
    imageLoaded,
    launchSettings,
    touchSettings,
    displaySettings,
    enableSkavlo,
    showInRecordOnly,
    multiTouch,
    singleTouch,
    restoreSettings,
    colorMode,
    imageMode,
    emojiMode,
    fillColor,
    borderColor,
    trailingEffect,
    opacity,
    circleSize,
    borderWidth,
    liftScale,
    duration,
    selectCustomImage,
    imageSize,
    setEmoji,
    colorBorder,
    emojiFill,
    emojiBorder,
    emojiSize,
    fillOpacity,
    borderOpacity,
    restoreQuestion,
    cancel,
    restore,
};

inline constexpr std::size_t kTextCount = 37;

// Ids are 0 to kTextCount - 1.
const Text& textPair(TextId id);

// The format with its "%@" replaced by the arguments, one after the other; what an argument
// contains stays as it is.
std::string fillIn(std::string_view format, std::initializer_list<std::string_view> arguments);

}  // namespace skavlo
