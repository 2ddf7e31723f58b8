// Pictures drawn scaled, each pixel the mean of the texels under it.
//
// A level of the mip chain is chosen with one to two texels per pixel (two to four for what is
// shown at full size, where its edges are looked at longest). A row of pixels is made in three
// passes over short rows of 16-bit channels, one level of brightness being 256: the texel rows
// under it are averaged, then the texels of each pixel, then the result is put over the target.
#include <algorithm>
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

// The mean of a few texel rows; those of no weight are given as any row.
template <int kRows>
HWY_INLINE VU16 averageAt(const std::uint8_t* const* rows, const VU16* weights, int channel) {
    VU16 sum = hn::Zero(kHalves);
    for (int i = 0; i < kRows; ++i) {
        const VU16 texels = hn::PromoteTo(kHalves, hn::LoadU(kBytes, rows[i] + channel));
        sum = hn::Add(sum, hn::MulHigh(hn::ShiftLeft<8>(texels), weights[i]));
    }
    return sum;
}

template <int kRows>
void averageRows(SpriteJob& job, const std::uint8_t* const* rows, const std::uint16_t* parts) {
    VU16 weights[kRows];
    for (int i = 0; i < kRows; ++i) weights[i] = hn::Set(kHalves, parts[i]);
    const int channels = job.texels * kChannels;
    const auto step = int(hn::Lanes(kHalves));
    std::uint16_t* out = job.texelRow.data();
    if (channels < step) {
        std::uint8_t copies[kRows][hn::MaxLanes(kHalves)] = {};
        const std::uint8_t* copied[kRows];
        for (int i = 0; i < kRows; ++i) {
            std::memcpy(copies[i], rows[i], std::size_t(channels));
            copied[i] = copies[i];
        }
        hn::StoreU(averageAt<kRows>(copied, weights, 0), kHalves, out);
        return;
    }
    for (int c = 0; c < channels - step; c += step) {
        hn::StoreU(averageAt<kRows>(rows, weights, c), kHalves, out + c);
    }
    // The last vector overlaps the one before it rather than the end of the picture.
    const int last = channels - step;
    hn::StoreU(averageAt<kRows>(rows, weights, last), kHalves, out + last);
}

// The mean of the texel rows under one row of pixels.
void averageRows(SpriteJob& job, int row) {
    const int side = job.level->size.width;
    const std::uint8_t* rows[kMostTaps];
    std::uint16_t weights[kMostTaps];
    int used = 1;
    for (int i = 0; i < kMostTaps; ++i) {
        const int y = std::min(job.rows.first[row] + i, side - 1);
        rows[i] = reinterpret_cast<const std::uint8_t*>(job.level->pixels.data() +
                                                        std::ptrdiff_t{y} * side + job.firstTexel);
        weights[i] = std::uint16_t(job.rows.weights[i][row]);
        if (weights[i] != 0) used = i + 1;
    }
    switch (used) {
        case 1:
            return averageRows<1>(job, rows, weights);
        case 2:
            return averageRows<2>(job, rows, weights);
        case 3:
            return averageRows<3>(job, rows, weights);
        default:
            return averageRows<kMostTaps>(job, rows, weights);
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
    const std::uint16_t* weights = job.columnWeights.data();
    for (int x = 0; x < job.area.width; x += 2) {
        const auto a = weighted<kPairs>(job.texelRow.data() + job.columns.first[x], weights);
        const auto b =
            weighted<kPairs>(job.texelRow.data() + job.columns.first[x + 1], weights + kPairs * 8);
        const auto sum =
            hn::Add(hn::ConcatLowerLower(kTwoTexels, b, a), hn::ConcatUpperUpper(kTwoTexels, b, a));
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

// What areaTaps() does, for eight pixels at a time.
void computeAreaTaps(const SpriteAxis& axis, int begin, int count, float factor, AxisTaps& taps) {
    const double ratio = axis.ratio();
    const VF zero = hn::Zero(kFloats);
    const VF side = hn::Set(kFloats, float(axis.side));
    const VF scale = hn::Set(kFloats, float(65535 / ratio) * factor);
    for (int i = 0; i < count; i += int(hn::Lanes(kFloats))) {
        const VF start = hn::Set(kFloats, float((begin + i - axis.origin) * ratio));
        const VF from = hn::MulAdd(laneNumbers(), hn::Set(kFloats, float(ratio)), start);
        const VF to = hn::Min(hn::Add(from, hn::Set(kFloats, float(ratio))), side);
        const VF first =
            hn::Max(hn::Min(hn::Floor(from), hn::Sub(side, hn::Set(kFloats, 1.0F))), zero);
        hn::StoreU(hn::ConvertTo(kInts, first), kInts, taps.first.data() + i);
        for (int tap = 0; tap < kMostTaps; ++tap) {
            const VF texel = hn::Add(first, hn::Set(kFloats, float(tap)));
            const VF end = hn::Min(to, hn::Add(texel, hn::Set(kFloats, 1.0F)));
            const VF overlap = hn::Max(hn::Sub(end, hn::Max(from, texel)), zero);
            const auto fixed = hn::BitCast(kPixels, hn::ConvertTo(kInts, hn::Mul(overlap, scale)));
            const auto twice = hn::Or(fixed, hn::ShiftLeft<16>(fixed));
            hn::StoreU(twice, kPixels, taps.weights[tap].data() + i);
        }
    }
}

void computeTaps(const SpriteAxis& axis, int begin, int count, float factor, AxisTaps& taps) {
    taps.resize(count);
    if (axis.ratio() >= 1) {
        computeAreaTaps(axis, begin, count, factor, taps);
    } else {
        computeLinearTaps(axis, begin, count, factor, taps);
    }
}

// Per pixel and pair of taps the four equal weights of either, as averageColumns() reads them.
void spreadWeights(SpriteJob& job) {
    const int pairs = job.pairs;
    const int count = job.area.width + (job.area.width & 1);
    job.columnWeights.resize(std::size_t((count + 3) / 4 * 4 * pairs) * 8);
    constexpr hn::FixedTag<std::uint32_t, 4> kFour;
    for (int x = 0; x < count; x += 4) {
        std::uint16_t* out = job.columnWeights.data() + std::ptrdiff_t{x} * pairs * 8;
        for (int pair = 0; pair < pairs; ++pair, out += 8) {
            const int odd = 2 * pair + 1;
            const auto a = hn::LoadU(kFour, job.columns.weights[2 * pair].data() + x);
            const auto b = odd < kMostTaps ? hn::LoadU(kFour, job.columns.weights[odd].data() + x)
                                           : hn::Zero(kFour);
            const auto store = [&](auto low, auto high, int at) HWY_ATTR {
                std::uint16_t* to = out + std::ptrdiff_t{at} * pairs * 8;
                hn::StoreU(hn::BitCast(kTwoTexels, hn::ConcatLowerLower(kFour, high, low)),
                           kTwoTexels, to);
                hn::StoreU(hn::BitCast(kTwoTexels, hn::ConcatUpperUpper(kFour, high, low)),
                           kTwoTexels, to + pairs * 8);
            };
            store(hn::InterleaveLower(kFour, a, a), hn::InterleaveLower(kFour, b, b), 0);
            store(hn::InterleaveUpper(kFour, a, a), hn::InterleaveUpper(kFour, b, b), 2);
        }
    }
}

void computeColumns(SpriteJob& job) {
    const int count = job.area.width;
    computeTaps(job.across, job.area.x, count, job.opacity, job.columns);
    spreadWeights(job);
    auto& first = job.columns.first;
    job.firstTexel = first[0];
    const int behind = first[std::size_t(count) - 1] + 2 * job.pairs;
    job.texels = std::min(behind, job.level->size.width) - job.firstTexel;
    for (int i = 0; i < count; ++i) first[i] = (first[i] - job.firstTexel) * kChannels;
    first[std::size_t(count)] = 0;  // the other half of the last pair, which is not shown
    job.texelRow.resize(std::size_t(job.texels) * kChannels + kPadding);
    std::fill(job.texelRow.end() - kPadding, job.texelRow.end(), std::uint16_t{0});
    job.pixelRow.resize(std::size_t(count) * kChannels + kPadding);
}

void drawJob(const RenderTarget& target, SpriteJob& job) {
    computeColumns(job);
    computeTaps(job.down, job.area.y, job.area.height, 1, job.rows);
    for (int y = job.area.y; y < job.area.bottom(); ++y) {
        averageRows(job, y - job.area.y);
        if (job.pairs > 2) {
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
