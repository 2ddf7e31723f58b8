// Draws looks into premultiplied 32-bit pixels. All lengths and places are in pixels; pixel (0, 0)
// covers 0 to 1 in both directions, so its centre is (0.5, 0.5).
#pragma once

#include <cstdint>
#include <memory>
#include <span>

#include "overlay/render/circle_style.h"
#include "platform/bitmap.h"
#include "platform/geometry.h"

namespace skavlo {

struct RenderTarget {
    std::uint32_t* pixels = nullptr;  // premultiplied, blue in the lowest byte
    int stride = 0;                   // pixels from one row to the next
    PixelSize size;
};

// One drawing of a look: centre, scale of the whole look, opacity of the composed look (0 to 1).
struct Instance {
    float x = 0;
    float y = 0;
    float scale = 1;
    float opacity = 1;
};

class Sprite;  // a picture and its mip chain, see sprite.h

// Instances are drawn in order, later above earlier, clipped to `clip` and the target. Instances
// that cannot be seen (below half a pixel or one level of alpha, not finite, outside) cost nothing.
void drawCircles(const RenderTarget& target, const PixelRect& clip, const PreparedCircle& circle,
                 std::span<const Instance> instances);
void drawSprites(const RenderTarget& target, const PixelRect& clip, const Sprite& sprite,
                 std::span<const Instance> instances);

// The pixels that drawing the instance may touch, not clipped to any target; empty when invisible.
PixelRect circleBounds(const PreparedCircle& circle, const Instance& instance);
PixelRect spriteBounds(const Sprite& sprite, const Instance& instance);

void clear(const RenderTarget& target, const PixelRect& rect);
// From a picture of the target's size without gaps between its rows, into the same places.
void copy(const RenderTarget& target, const PixelRect& rect, const std::uint32_t* picture);

}  // namespace skavlo
