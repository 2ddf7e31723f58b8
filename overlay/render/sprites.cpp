// Pictures drawn scaled, each pixel the mean of the texels under it.
//
// A level of the mip chain is chosen with one to two texels per pixel (two to four for what is
// shown at full size, where its edges are looked at longest). A row of pixels is made in three
// passes over short rows of 16-bit channels, one level of brightness being 256: the texel rows
// under it are averaged, then the texels of each pixel, then the result is put over the target.
#include <cstring>

#include "overlay/render/sprite_job.h"
#include "overlay/render/visibility.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "overlay/render/sprites.cpp"
#include <hwy/foreach_target.h>  // IWYU pragma: keep
#include <hwy/highway.h>

#include "overlay/render/blend-inl.h"

HWY_BEFORE_NAMESPACE();
namespace skavlo {
namespace HWY_NAMESPACE {
namespace {

constexpr hn::FixedTag<std::uint16_t, 8> kTwoTexels;
constexpr hn::Rebind<std::uint8_t, decltype(kHalves)> kBytes;
constexpr int kPixelsAtOnce = int(hn::MaxLanes(kHalves)) / kChannels;

HWY_INLINE std::uint16_t fixed(float weight) {
    return std::uint16_t(weight * 65535.0F);
}

// The mean of the texel rows under one row of pixels.
void averageRows(SpriteJob& job, const Taps& taps) {
    const std::ptrdiff_t side = job.level->size.width;
    const std::uint32_t* first = job.level->pixels.data() + taps.first * side + job.firstTexel;
    const int channels = job.texels * kChannels;
    const auto step = int(hn::Lanes(kHalves));
    const auto row = [&](int tap) {
        return reinterpret_cast<const std::uint8_t*>(first + tap * side);
    };
    for (int c = 0; c < channels; c += step) {
        VU16 sum = hn::Zero(kHalves);
        for (int tap = 0; tap < job.taps; ++tap) {
            const std::uint16_t weight = fixed(taps.weights[tap]);
            if (weight == 0) continue;
            std::uint8_t rest[hn::MaxLanes(kHalves)] = {};
            const std::uint8_t* from = row(tap) + c;
            if (c + step > channels) {
                std::memcpy(rest, from, std::size_t(channels - c));
                from = rest;
            }
            const VU16 texels = hn::PromoteTo(kHalves, hn::LoadU(kBytes, from));
            sum = hn::Add(sum, hn::MulHigh(hn::ShiftLeft<8>(texels), hn::Set(kHalves, weight)));
        }
        hn::StoreU(sum, kHalves, job.texelRow.data() + c);
    }
}

template <int kPairs>
HWY_INLINE hn::Vec<decltype(kTwoTexels)> weighted(const std::uint16_t* texels,
                                                  const std::uint16_t* weights) {
    auto sum = hn::Zero(kTwoTexels);
    for (int i = 0; i < kPairs; ++i) {
        sum = hn::Add(sum, hn::MulHigh(hn::LoadU(kTwoTexels, texels + 8 * i),
                                       hn::LoadU(kTwoTexels, weights + 8 * i)));
    }
    return sum;
}

// The mean of the texels under each pixel, faded; two pixels at a time.
template <int kPairs>
void averageColumns(SpriteJob& job) {
    const std::uint16_t* weights = job.weights.data();
    for (int x = 0; x < job.area.width; x += 2) {
        const auto a = weighted<kPairs>(job.texelRow.data() + job.offsets[x], weights);
        const auto b = weighted<kPairs>(job.texelRow.data() + job.offsets[x + 1],
                                        weights + kPairs * 8);
        const auto sum = hn::Add(hn::ConcatLowerLower(kTwoTexels, b, a),
                                 hn::ConcatUpperUpper(kTwoTexels, b, a));
        hn::StoreU(sum, kTwoTexels, job.pixelRow.data() + x * kChannels);
        weights += kPairs * 16;
    }
}

HWY_INLINE void blend(const std::uint16_t* HWY_RESTRICT source, std::uint32_t* HWY_RESTRICT at) {
    static constexpr std::uint8_t kAlpha[16] = {6,  7,  6,  7,  6,  7,  6,  7,
                                                14, 15, 14, 15, 14, 15, 14, 15};
    const auto bytes = hn::LoadDup128(hn::Repartition<std::uint8_t, decltype(kHalves)>(), kAlpha);
    auto* pixels = reinterpret_cast<std::uint8_t*>(at);
    const VU16 over = hn::LoadU(kHalves, source);
    const VU16 alpha = hn::TableLookupBytes(over, hn::BitCast(kHalves, bytes));
    const VU16 kept = hn::Not(hn::Add(alpha, hn::ShiftRight<8>(alpha)));
    const VU16 below = hn::PromoteTo(kHalves, hn::LoadU(kBytes, pixels));
    const VU16 half = hn::Set(kHalves, std::uint16_t{128});
    const VU16 sum = overHalves(hn::ShiftLeft<8>(below), kept, hn::Add(over, half));
    const hn::RebindToSigned<decltype(kHalves)> kSigned;
    const auto levels = hn::BitCast(kSigned, hn::ShiftRight<8>(sum));
    hn::StoreU(hn::DemoteTo(kBytes, levels), kBytes, pixels);
}

void blendRow(const std::uint16_t* source, std::uint32_t* pixels, int count) {
    int x = 0;
    for (; x + kPixelsAtOnce <= count; x += kPixelsAtOnce) {
        blend(source + x * kChannels, pixels + x);
    }
    if (x == count) return;
    std::uint32_t part[kPixelsAtOnce] = {};
    const std::size_t bytes = sizeof(part[0]) * std::size_t(count - x);
    std::memcpy(part, pixels + x, bytes);
    blend(source + x * kChannels, part);
    std::memcpy(pixels + x, part, bytes);
}

void drawJob(const RenderTarget& target, SpriteJob& job) {
    for (int y = job.area.y; y < job.area.bottom(); ++y) {
        averageRows(job, job.down.at(y));
        if (job.taps > 3) {
            averageColumns<3>(job);
        } else {
            averageColumns<2>(job);
        }
        std::uint32_t* pixels = target.pixels + std::ptrdiff_t{y} * target.stride + job.area.x;
        blendRow(job.pixelRow.data(), pixels, job.area.width);
    }
}

void drawAll(const RenderTarget& target, const PixelRect& clip, const Sprite& sprite,
             std::span<const Instance> instances) {
    SpriteJob job;
    for (const Instance& instance : instances) {
        if (prepare(job, sprite, clip, instance)) drawJob(target, job);
    }
}

}  // namespace
}  // namespace HWY_NAMESPACE
}  // namespace skavlo
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace skavlo {
HWY_EXPORT(drawAll);

void drawSprites(const RenderTarget& target, const PixelRect& clip, const Sprite& sprite,
                 std::span<const Instance> instances) {
    const PixelRect area = drawable(target, clip);
    if (area.empty() || sprite.levels().empty()) return;
    HWY_DYNAMIC_DISPATCH(drawAll)(target, area, sprite, instances);
}

}  // namespace skavlo
#endif
