// What input sources need to know of the outputs.
#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

#include "platform/geometry.h"

namespace skavlo {

// How far the picture is turned on the panel, counter-clockwise, as RandR counts it: with `left`
// (90 degrees) the top of the picture lies along the panel's left edge.
enum class Rotation { normal, left, inverted, right };

struct OutputInfo {
    std::string name = {};  // the connector's, as "eDP-1"
    PixelRect rect = {};    // in desktop pixels, after rotation
    Rotation rotation = Rotation::normal;
    bool reflectX = false;  // of the picture as the user sees it, so applied after the rotation
    bool reflectY = false;
    bool primary = false;
    bool internal = false;  // the panel of a laptop or tablet
};

struct OutputLayout {
    std::vector<OutputInfo> outputs;
    PixelSize desktop;     // spanned by all outputs, origin (0, 0)
    std::size_t main = 0;  // the output the overlay lies on; without one, the whole desktop
    double scale = 1;      // pixels per point
};

using OutputLayoutProvider = std::function<OutputLayout()>;

}  // namespace skavlo
