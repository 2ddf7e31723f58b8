// An instance of a sprite made ready for drawing. Internal to the renderer.
#pragma once

#include <cstdint>
#include <vector>

#include "overlay/render/sprite.h"
#include "overlay/render/sprite_axis.h"

namespace skavlo {

inline constexpr int kChannels = 4;
inline constexpr std::size_t kPadding = 32;  // channels behind a row that vectors may run over

// An instance ready for drawing, and the rows it needs.
struct SpriteJob {
    const Bitmap* level = nullptr;
    SpriteAxis across;
    SpriteAxis down;
    PixelRect area;
    float opacity = 1;
    int taps = 3;
    int firstTexel = 0;
    int texels = 0;                      // columns of the level that the area needs
    std::vector<std::int32_t> offsets;   // channels from the row's begin to a pixel's first texel
    std::vector<std::uint16_t> weights;  // per pixel and tap four equal ones, an even count of taps
    std::vector<std::uint16_t> texelRow;
    std::vector<std::uint16_t> pixelRow;
};

// False when nothing of the instance can be seen within the clip. The job's memory is used again.
bool prepare(SpriteJob& job, const Sprite& sprite, const PixelRect& clip, const Instance& instance);

}  // namespace skavlo
