#include "overlay/render/sprite_job.h"

#include "overlay/render/visibility.h"

namespace skavlo {
namespace {

// The smallest level with at least `texelsPerPixel`, the picture itself when none has.
const Bitmap& levelFor(const Sprite& sprite, double length, double texelsPerPixel) {
    const Bitmap* best = sprite.levels().front().get();
    for (const auto& level : sprite.levels()) {
        if (level->size.width < length * texelsPerPixel) break;
        best = level.get();
    }
    return *best;
}

void prepareColumns(SpriteJob& job) {
    const int count = job.area.width + (job.area.width & 1);
    const int pairs = job.taps > 3 ? 3 : 2;
    job.firstTexel = job.across.at(job.area.x).first;
    job.offsets.assign(std::size_t(count), 0);
    job.weights.assign(std::size_t(count) * std::size_t(pairs) * 8, 0);
    int last = job.firstTexel;
    for (int x = 0; x < job.area.width; ++x) {
        const Taps taps = job.across.at(job.area.x + x);
        job.offsets[std::size_t(x)] = (taps.first - job.firstTexel) * kChannels;
        auto weight = job.weights.begin() + std::ptrdiff_t{x} * pairs * 8;
        for (int tap = 0; tap < job.taps; ++tap, weight += 4) {
            std::fill_n(weight, 4, std::uint16_t(taps.weights[tap] * job.opacity * 65535.0F));
        }
        last = std::min(taps.first + job.taps, job.level->size.width);
    }
    job.texels = last - job.firstTexel;
    job.texelRow.assign(std::size_t(job.texels) * kChannels + kPadding, 0);
    job.pixelRow.resize(std::size_t(count) * kChannels + kPadding);
}

}  // namespace

bool prepare(SpriteJob& job, const Sprite& sprite, const PixelRect& clip, const Instance& i) {
    job.area = intersection(clip, spriteBounds(sprite, i));
    if (job.area.empty()) return false;
    const double length = sprite.displaySize() * i.scale;
    const bool still = i.scale >= 1 && i.opacity >= 1;
    job.level = &levelFor(sprite, length, still ? 2 : 1);
    const int side = job.level->size.width;
    job.across = {i.x - length / 2, length, side};
    job.down = {i.y - length / 2, length, side};
    job.taps = side > 2 * length ? kMostTaps : 3;
    job.opacity = std::min(i.opacity, 1.0F);
    prepareColumns(job);
    return true;
}

}  // namespace skavlo
