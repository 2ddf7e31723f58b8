// What input sources need to know of the outputs.
#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/geometry.h"

namespace skavlo {

// How far the picture is turned on the panel, counter-clockwise, as RandR counts it: with `left`
// (90 degrees) the top of the picture lies along the panel's left edge.
enum class Rotation { normal, left, inverted, right };

struct OutputInfo {
    std::string name = {};  // the connector's, as "eDP-1"
    PixelRect rect = {};    // in units of the desktop, after rotation
    Rotation rotation = Rotation::normal;
    bool reflectX = false;  // of the picture as the user sees it, so applied after the rotation
    bool reflectY = false;
    bool primary = false;
    bool internal = false;  // the panel of a laptop or tablet
};

// The desktop's units are pixels on X11, where all outputs share one scale, and points on Wayland,
// where each output has its own.
struct OutputLayout {
    std::vector<OutputInfo> outputs;
    PixelSize desktop;     // spanned by all outputs, origin (0, 0)
    std::size_t main = 0;  // the output the overlay lies on; without one, the whole desktop
    double scale = 1;      // units of the desktop per point
};

// Whether the panel of a laptop or tablet is connected under this name.
bool isInternalConnector(std::string_view name);

// The output that the overlay lies on: the one that the touchscreen is mapped to when there is one
// of that name, else the internal panel, else the primary one, else the first.
std::size_t chooseMainOutput(const std::vector<OutputInfo>& outputs, std::string_view touchOutput);

// Whether places in points of the main output are the same places on the same panel.
bool sameMainScreen(const OutputLayout& before, const OutputLayout& after);

using OutputLayoutProvider = std::function<OutputLayout()>;

}  // namespace skavlo
