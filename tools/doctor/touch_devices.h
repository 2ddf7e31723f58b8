#pragma once

#include <string>
#include <vector>

namespace skavlo::doctor {

struct TouchDevice {
    std::string name;
    std::string output;  // that udev maps it to; empty: to none in particular
};

// The touchscreens that the kernel knows, readable or not.
std::vector<TouchDevice> touchDevices();

}  // namespace skavlo::doctor
