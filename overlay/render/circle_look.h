// A circle style made ready for drawing. Internal to the renderer.
#pragma once

#include <array>

#include "overlay/render/render.h"

namespace skavlo {

// Premultiplied, 0 to 1, in the order of the bytes of a pixel: blue, green, red, alpha.
using Premultiplied = std::array<float, 4>;

struct CircleLook {
    float radius = 0;       // at scale 1
    float innerRadius = 0;  // of the part inside the border, 0 when there is none
    Premultiplied rim{};    // border drawn over fill
    Premultiplied inside{};
    float strongestAlpha = 0;
};

// Components outside 0 to 1 are held to it; what is not a number counts as 0. A style without a
// border is one rim that fills the disc.
CircleLook circleLook(const CircleStyle& style);

// The edges are approximated by their tangents, which may reach this far beyond the disc (pixels).
inline constexpr double kCircleMargin = 0.125;

}  // namespace skavlo
