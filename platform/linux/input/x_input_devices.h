// What the X server knows of its input devices.
#pragma once

#include <xcb/xcb.h>
#include <xcb/xinput.h>

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "platform/linux/input/mapping.h"

namespace skavlo {

struct XInputDevice {
    struct Axis {
        double minimum = 0;
        double maximum = 0;
        // As the server does it: a range of 0 to 65535 has 65536 steps.
        [[nodiscard]] double normalised(double value) const {
            return (value - minimum) / (maximum - minimum + 1);
        }
    };
    std::uint16_t id = 0;
    bool enabled = false;
    bool directTouch = false;  // a touchscreen; touchpads are "dependent" touch devices
    Axis x;
    Axis y;
    std::string node;  // "/dev/input/event5"; empty: not known
    std::optional<Affine> coordinateTransformation;
    std::optional<Affine> calibration;
};

struct XInputAtoms {
    xcb_atom_t node;
    xcb_atom_t transformation;
    xcb_atom_t calibration;
};

XInputAtoms internXInputAtoms(xcb_connection_t* connection);

// All but the masters. Two round trips; empty when the server is gone.
std::vector<XInputDevice> queryXInputDevices(xcb_connection_t* connection,
                                             const XInputAtoms& atoms);

}  // namespace skavlo
