// An instance of a sprite made ready for drawing. Internal to the renderer.
#pragma once

#include <cstdint>
#include <vector>

#include "overlay/render/sprite.h"
#include "overlay/render/sprite_axis.h"

namespace skavlo {

inline constexpr int kChannels = 4;
inline constexpr std::size_t kPadding = 32;  // channels behind a row that vectors may run over

// Per pixel of one direction its first texel and the weights of the five texels from there on, as
// 16-bit parts of 65535 in both halves of a word.
struct AxisTaps {
    std::vector<std::int32_t> first;
    std::vector<std::uint32_t> weights[kMostTaps];
    // Some more than `count`, as vectors may run over it.
    void resize(int count);
};

// An instance ready for drawing, and the rows it needs.
struct SpriteJob {
    const Bitmap* level = nullptr;
    SpriteAxis across;
    SpriteAxis down;
    PixelRect area;
    float opacity = 1;
    int pairs = 2;       // of taps
    int firstTexel = 0;  // the first of the columns that the area needs
    int texels = 0;
    AxisTaps rows;
    AxisTaps columns;  // `first` counts channels from the begin of texelRow
    std::vector<std::uint16_t> columnWeights;
    std::vector<std::uint16_t> texelRow;
    std::vector<std::uint16_t> pixelRow;
};

// linearTaps() of a row of pixels, the weights multiplied by `factor`.
void computeLinearTaps(const SpriteAxis& axis, int begin, int count, float factor, AxisTaps& taps);

// False when nothing of the instance can be seen within the clip. The job's memory is used again.
bool prepare(SpriteJob& job, const Sprite& sprite, const PixelRect& clip, const Instance& instance);

}  // namespace skavlo
