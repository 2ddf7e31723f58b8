// An independent drawing of the looks: Cairo at a multiple of the resolution, averaged down.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <vector>

#include "overlay/render/render.h"

namespace skavlo::reference {

// What pixels should be: premultiplied levels 0 to 255 as they come out of averaging.
struct Picture {
    PixelSize size;
    std::vector<std::array<double, 4>> pixels;  // blue, green, red, alpha
    std::vector<bool> edge;                     // partly covered by an edge of the look
    [[nodiscard]] std::size_t index(int x, int y) const {
        return std::size_t(y) * std::size_t(size.width) + std::size_t(x);
    }
};

Picture circle(PixelSize size, const CircleStyle& style, const Instance& instance);

// The square of `side` pixels around the instance's place, edges marked where a pixel differs from
// a neighbour by more than `edgeStep` levels.
Picture sprite(PixelSize size, const Bitmap& picture, double side, const Instance& instance,
               double edgeStep);

// The same drawn by Cairo at the resolution itself, with its bilinear filter.
Bitmap bilinearSprite(PixelSize size, const Bitmap& picture, double side, const Instance& instance);

// A regular pentagram with one point up, as wide as `width`, its bounding box in the middle.
Picture star(PixelSize size, double width, const Colour& colour);

struct Difference {
    double edgeMean = 0;   // levels, over edge pixels and channels
    double otherMost = 0;  // levels, the worst channel of all other pixels
    int edgePixels = 0;
};
Difference difference(const Picture& expected, const Bitmap& drawn);

Bitmap blank(PixelSize size);
RenderTarget targetOf(Bitmap& bitmap);
void writePng(const Bitmap& bitmap, const std::string& path);
// A word in the emoji font, centred in a square.
Bitmap textPicture(const std::string& utf8, int side);

}  // namespace skavlo::reference
