// What a circle looks like, at scale 1 and in pixels.
#pragma once

#include <array>

#include "settings/colour.h"

namespace skavlo {

// A disc of `fill` with a ring of `border` drawn over its rim, inside the diameter: under a
// translucent border the fill shows through. A border wider than the radius covers the whole disc.
struct CircleStyle {
    double diameter = 0;  // at scale 1
    double borderWidth = 0;
    Colour fill;
    Colour border;
};

// Premultiplied, 0 to 1, in the order of the bytes of a pixel: blue, green, red, alpha.
using Premultiplied = std::array<float, 4>;

// A style made ready for drawing. Components outside 0 to 1 are held to it; what is not a number
// counts as 0. A style without a border is one rim that fills the disc.
struct PreparedCircle {
    PreparedCircle(const CircleStyle& style);

    float radius = 0;
    float innerRadius = 0;  // of the part inside the border, 0 when there is none
    Premultiplied rim{};    // border drawn over fill
    Premultiplied inside{};
    float strongestAlpha = 0;
};

}  // namespace skavlo
