// The markers in a picture of a screen that is otherwise one colour.
#pragma once

#include <cstdint>
#include <vector>

#include "platform/bitmap.h"
#include "platform/geometry.h"

namespace skavlo::test {

struct Marker {
    PixelRect bounds;
    std::uint32_t middle;  // colour, 0xAARRGGBB
};

// Every connected area that is not background, from the top down.
std::vector<Marker> markersIn(const Bitmap& picture, std::uint32_t background);

// Whether there is one marker in its full size at each of the places, from the top down, and
// nothing else; each drawn just once, which its colour says, for it lets the background through.
bool areAt(const std::vector<Marker>& markers, const std::vector<Point>& places,
           std::uint32_t background);

}  // namespace skavlo::test
