// The configuration file of a private X server.
#pragma once

#include <string>
#include <vector>

#include "platform/geometry.h"

namespace skavlo::rig {

inline constexpr int kTouchContacts = 10;

struct XConfigOptions {
    std::vector<PixelSize> sizes;  // each becomes a mode, the first the one in force at the start
    std::string touchSocket = {};  // empty: without a touch device
    bool machineDevices = false;   // the machine's own input devices, as they come and go
};

// Without video hardware.
std::string xConfig(const XConfigOptions& options);

// How that file calls the mode of a size.
std::string modeName(PixelSize size);

}  // namespace skavlo::rig
