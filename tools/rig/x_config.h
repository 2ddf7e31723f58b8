// The configuration file of a private X server.
#pragma once

#include <string>
#include <vector>

#include "platform/geometry.h"

namespace skavlo::rig {

inline constexpr int kTouchContacts = 10;

// Without video hardware; `touchSocket` empty: without a touch device. Every size becomes a mode,
// the first the one in force at the start.
std::string xConfig(const std::vector<PixelSize>& sizes, const std::string& touchSocket);

// How that file calls the mode of a size.
std::string modeName(PixelSize size);

}  // namespace skavlo::rig
