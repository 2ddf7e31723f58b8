// Which window server the overlay uses, and what is odd about it. Pure.
#pragma once

#include <optional>
#include <string_view>

#include "tools/doctor/finding.h"

namespace skavlo::doctor {

struct DisplayFacts {
    bool wayland = false;     // a compositor answers
    bool layerShell = false;  // and offers layer shell
    bool x = false;           // an X server answers
    bool alpha = false;       // and has windows with an alpha channel
};
Findings judgeDisplay(const DisplayFacts& facts);

// Mutter before 44.2 gives an XWayland window all touches after each frame that it draws, whatever
// its input shape says. The text is what the program's --version prints, as "mutter 43.8"; none:
// there is no number in it.
std::optional<bool> swallowsTouches(std::string_view version);

}  // namespace skavlo::doctor
