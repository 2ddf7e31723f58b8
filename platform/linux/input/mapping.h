// From a device's own coordinates to points of the main output. Pure.
#pragma once

#include <array>
#include <optional>
#include <string>
#include <string_view>

#include "platform/geometry.h"
#include "platform/linux/output_layout.h"

namespace skavlo {

// Row by row, as in LIBINPUT_CALIBRATION_MATRIX: x' = m0 x + m1 y + m2, y' = m3 x + m4 y + m5.
struct Affine {
    std::array<double, 6> m{1, 0, 0, 0, 1, 0};
    [[nodiscard]] Point apply(Point p) const {
        return {m[0] * p.x + m[1] * p.y + m[2], m[3] * p.x + m[4] * p.y + m[5]};
    }
    bool operator==(const Affine&) const = default;
};

// Applies `inner` first.
Affine compose(const Affine& outer, const Affine& inner);

// What is known of where a touch device lies. Without either, it lies on the internal panel, else
// on the primary output, else on the first one.
struct DevicePlacement {
    std::string outputName = {};  // empty: none was given
    std::optional<Affine> desktopTransform =
        {};  // the X server's "Coordinate Transformation Matrix"
};

// Null when the layout has no output.
const OutputInfo* mainOutput(const OutputLayout& layout);
const OutputInfo* outputOfDevice(const OutputLayout& layout, std::string_view outputName);

// The name of the output that a device is mapped to, by its name or because its transformation lays
// it over that output alone; empty when nothing says so.
std::string mappedOutput(const OutputLayout& layout, const DevicePlacement& placement);

// Size of the main output, or of the desktop without one.
Size mainSizeInPoints(const OutputLayout& layout);

// Normalised place on a panel, native orientation, to normalised place in the picture it shows.
Affine panelToPicture(const OutputInfo& output);

Affine desktopPixelsToPoints(const OutputLayout& layout);

// Normalised (0 to 1, calibrated) device position to points of the main output.
Affine deviceToPoints(const OutputLayout& layout, const DevicePlacement& placement);

}  // namespace skavlo
