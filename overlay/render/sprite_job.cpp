#include "overlay/render/sprite_job.h"

#include "overlay/render/visibility.h"

namespace skavlo {
namespace {

// Pixels. What is smaller shows the errors of a coarse level most, and costs next to nothing.
constexpr double kSmallLength = 24;

// The smallest level with at least `texelsPerPixel`, the picture itself when none has.
const Bitmap& levelFor(const Sprite& sprite, double length, double texelsPerPixel) {
    const Bitmap* best = sprite.levels().front().get();
    for (const auto& level : sprite.levels()) {
        if (level->size.width < length * texelsPerPixel) break;
        best = level.get();
    }
    return *best;
}

}  // namespace

void AxisTaps::resize(int count) {
    constexpr std::size_t kMore = 16;
    first.resize(std::size_t(count) + kMore);
    for (auto& tap : weights) tap.resize(std::size_t(count) + kMore);
}

void computeLinearTaps(const SpriteAxis& axis, int begin, int count, float factor, AxisTaps& taps) {
    for (int i = 0; i < count; ++i) {
        const auto at = std::size_t(i);
        const Taps found = axis.linear(begin + i);
        taps.first[at] = found.first;
        for (int tap = 0; tap < kMostTaps; ++tap) {
            const auto weight = std::uint32_t(found.weights[tap] * factor * 65535.0F);
            taps.weights[tap][at] = weight | weight << 16;
        }
    }
}

bool prepare(SpriteJob& job, const Sprite& sprite, const PixelRect& clip, const Instance& i) {
    job.area = intersection(clip, spriteBounds(sprite, i));
    if (job.area.empty()) return false;
    const double length = sprite.displaySize() * i.scale;
    const bool still = i.scale >= 1 && i.opacity >= 1;
    job.level = &levelFor(sprite, length, still || length < kSmallLength ? 2 : 1);
    const int side = job.level->size.width;
    job.across = {i.x - length / 2, length, side};
    job.down = {i.y - length / 2, length, side};
    job.pairs = side > 3 * length ? 3 : 2;  // n texels a pixel lie in n + 1 or fewer
    job.opacity = std::min(i.opacity, 1.0F);
    return true;
}

}  // namespace skavlo
