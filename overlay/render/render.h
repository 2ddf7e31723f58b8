// Draws looks into premultiplied 32-bit pixels. All lengths and places are in pixels; pixel (0, 0)
// covers 0 to 1 in both directions, so its centre is (0.5, 0.5).
#pragma once

#include <cstdint>
#include <memory>
#include <span>

#include "platform/bitmap.h"
#include "platform/geometry.h"
#include "settings/colour.h"

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

// A disc of `fill` with a ring of `border` drawn over its rim, inside the diameter: under a
// translucent border the fill shows through. A border wider than the radius covers the whole disc.
struct CircleStyle {
    double diameter = 0;  // at scale 1
    double borderWidth = 0;
    Colour fill;
    Colour border;
};

class Sprite;  // a picture and its mip chain, see sprite.h

// Instances are drawn in order, later above earlier, clipped to `clip` and the target. Instances
// that cannot be seen (below half a pixel or one level of alpha, not finite, outside) cost nothing.
void drawCircles(const RenderTarget& target, const PixelRect& clip, const CircleStyle& style,
                 std::span<const Instance> instances);
void drawSprites(const RenderTarget& target, const PixelRect& clip, const Sprite& sprite,
                 std::span<const Instance> instances);

// The pixels that drawing the instance may touch, not clipped to any target; empty when invisible.
PixelRect circleBounds(const CircleStyle& style, const Instance& instance);
PixelRect spriteBounds(const Sprite& sprite, const Instance& instance);

void clear(const RenderTarget& target, const PixelRect& rect);

}  // namespace skavlo
