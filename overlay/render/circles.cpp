// Circles with exact area coverage, eight pixels at a time.
//
// The look of a pixel is opacity * (rim * (Co - Ci) + inside * Ci), Co and Ci being the covered
// part of the pixel by the whole disc and by the disc inside the border: linear in the coverages,
// hence what averaging a far finer drawing gives.
//
// Coverage of a disc: seen from one pixel, the edge is a straight line at the signed distance e
// (radius less distance of the pixel's centre) whose normal has the components m >= n >= 0. The
// covered part of the unit square is then
//     1/2 + e/m - z|z| / (2mn),   e held to +-(m+n)/2, z the part of e beyond +-(m-n)/2,
// straight in the middle and bending into the two corners. Every pixel of a row that the edge
// crosses lies at the radius, so the sine of the normal's angle is the row's height over it; where
// the edge runs nearly along the row that is too coarse and every pixel gets its own normal.
// Discs too small for tangents are integrated along eight lines per row.
#include "overlay/render/circle_look.h"
#include "overlay/render/visibility.h"

// Scalable vectors cannot be members, which this file makes use of.
#define HWY_DISABLED_TARGETS (HWY_SVE | HWY_SVE2 | HWY_SVE_256 | HWY_SVE2_128 | HWY_RVV)
#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "overlay/render/circles.cpp"
#include <hwy/foreach_target.h>  // IWYU pragma: keep
#include <hwy/highway.h>

#include "overlay/render/blend-inl.h"
#include "overlay/render/circle_rows-inl.h"

HWY_BEFORE_NAMESPACE();
namespace skavlo {
namespace HWY_NAMESPACE {
namespace {

struct Edge {
    VF radius, sum, diff, slope, bend;
};

// Rounds 0 to kCovered to an integer in both halves of each lane.
HWY_INLINE VU16 toCoverage(VF value) {
    const VF held = hn::Min(value, hn::Set(kFloats, float{kCovered}));
    const auto bits = hn::BitCast(kPixels, hn::Add(held, hn::Set(kFloats, 8388608.0F)));
    return hn::OddEven(hn::BitCast(kHalves, hn::ShiftLeft<16>(bits)), hn::BitCast(kHalves, bits));
}

HWY_INLINE VU16 coverage(VF distance, const Edge& edge) {
    const VF e = hn::Sub(edge.radius, distance);
    const VF held = hn::Max(hn::Min(e, edge.sum), hn::Neg(edge.sum));
    const VF straight = hn::Max(hn::Min(e, edge.diff), hn::Neg(edge.diff));
    const VF z = hn::Sub(held, straight);
    const VF line = hn::MulAdd(held, edge.slope, hn::Set(kFloats, 32767.5F));
    return toCoverage(hn::NegMulAdd(hn::Mul(z, hn::Abs(z)), edge.bend, line));
}

// Covered part of pixels centred dx off the disc's middle, from half chords at eight heights.
HWY_INLINE VU16 chordCoverage(VF dx, const float* HWY_RESTRICT halfChords) {
    const VF half = hn::Set(kFloats, 0.5F);
    const VF right = hn::Add(half, dx);
    const VF left = hn::Sub(half, dx);
    VF sum = hn::Zero(kFloats);
    for (int i = 0; i < kLinesPerRow; ++i) {
        const VF h = hn::Set(kFloats, halfChords[i]);
        const VF overlap = hn::Add(hn::Min(right, h), hn::Min(left, h));
        sum = hn::Add(sum, hn::Max(overlap, hn::Zero(kFloats)));
    }
    return toCoverage(hn::Mul(sum, hn::Set(kFloats, 65535.0F / kLinesPerRow)));
}

// Both edges of a row in 16-bit integers, four lanes of the outer and four of the inner in turns.
// Distances count 1/8192 pixels, as do coverages until they are scaled up at the end.
class TangentRow {
  public:
    HWY_INLINE TangentRow(const CircleRows& rows, int row)
        : outerReach_(hn::Set(kInts, rows.outer.reach[row])),
          innerReach_(hn::Set(kInts, rows.inner.reach[row])),
          sum_(spread(rows.edges.sum[row])),
          diff_(spread(rows.edges.diff[row])),
          slope_(spread(rows.edges.slope[row])),
          power_(spread(rows.edges.power[row])),
          bend_(spread(rows.edges.bend[row])),
          begin_(std::int32_t((0.5F - rows.circle.x) * kUnitsPerPixel)) {}

    using Place = hn::Vec<decltype(kInts)>;
    HWY_INLINE Place placeOf(int x) const {
        return hn::Add(hn::Set(kInts, begin_ + x * (1 << kPixelBits)),
                       hn::ShiftLeft<kPixelBits>(hn::Iota(kInts, 0)));
    }
    static HWY_INLINE Place next(Place place) {
        return hn::Add(place, hn::Set(kInts, kLanes << kPixelBits));
    }

    HWY_INLINE void at(Place dx, VU16& outerCover, VU16& innerCover) const {
        const Place across = hn::Abs(dx);
        const auto t = hn::ReorderDemote2To(kShorts, hn::Sub(outerReach_, across),
                                            hn::Sub(innerReach_, across));
        const VU16 held = hn::Min(hn::BitCast(kHalves, hn::Abs(t)), sum_);
        const VU16 z = hn::Mul(hn::SaturatedSub(held, diff_), power_);
        const VU16 bent = hn::MulHigh(hn::MulHigh(z, z), bend_);
        const VU16 part = hn::Sub(hn::MulHigh(held, slope_), bent);
        const VU16 half = hn::Min(part, hn::Set(kHalves, std::uint16_t{kHalf}));
        const VU16 sign = hn::BitCast(kHalves, hn::ShiftRight<15>(t));
        const VU16 cover = hn::Add(hn::Xor(half, sign), hn::Set(kHalves, std::uint16_t{kHalf + 1}));
        const VU16 scaled = hn::ShiftLeft<16 - kPixelBits>(
            hn::Min(cover, hn::Set(kHalves, std::uint16_t{2 * kHalf - 1})));
        outerCover = hn::InterleaveLower(kHalves, scaled, scaled);
        innerCover = hn::InterleaveUpper(kHalves, scaled, scaled);
    }

  private:
    static constexpr hn::RebindToSigned<decltype(kHalves)> kShorts{};
    static constexpr int kHalf = 1 << (kPixelBits - 1);
    static_assert(kCovered == (2 * kHalf - 1) << (16 - kPixelBits));

    static HWY_INLINE VU16 spread(std::uint32_t pair) {
        static constexpr std::uint8_t kPattern[16] = {0, 1, 0, 1, 0, 1, 0, 1,
                                                      2, 3, 2, 3, 2, 3, 2, 3};
        const auto pattern =
            hn::LoadDup128(hn::Repartition<std::uint8_t, decltype(kHalves)>(), kPattern);
        return hn::BitCast(
            kHalves, hn::TableLookupBytes(hn::Set(kPixels, pair), hn::BitCast(kPixels, pattern)));
    }

    Place outerReach_, innerReach_;
    VU16 sum_, diff_, slope_, power_, bend_;
    std::int32_t begin_;
};

// Places as floats, for the other kinds of rows.
class FloatRow {
  public:
    using Place = VF;
    explicit HWY_INLINE FloatRow(const CircleRows& rows)
        : firstCentre_(hn::Sub(hn::Iota(kFloats, 0.5F), hn::Set(kFloats, rows.circle.x))) {}
    HWY_INLINE Place placeOf(int x) const {
        return hn::Add(firstCentre_, hn::Set(kFloats, float(x)));
    }
    static HWY_INLINE Place next(Place place) {
        return hn::Add(place, hn::Set(kFloats, float{kLanes}));
    }

  private:
    VF firstCentre_;
};

// The same where an edge is nearly level: the normal is that of each pixel, for both edges.
struct FlatRow : FloatRow {
    VF dy, outerRadius, innerRadius;
    HWY_INLINE FlatRow(const CircleRows& rows, int row)
        : FloatRow(rows),
          dy(hn::Sqrt(hn::Set(kFloats, rows.dySquared[row]))),
          outerRadius(hn::Set(kFloats, rows.tangentRadius(rows.circle.radius))),
          innerRadius(hn::Set(kFloats, rows.coveringInnerRadius())) {}
    HWY_INLINE void at(VF dx, VU16& outerCover, VU16& innerCover) const {
        const VF half = hn::Set(kFloats, 0.5F);
        const VF across = hn::Abs(dx);
        const VF distance = hn::Sqrt(hn::MulAdd(dx, dx, hn::Mul(dy, dy)));
        const VF scale = hn::Div(half, hn::Max(distance, hn::Set(kFloats, 0.5F)));
        const VF m = hn::Max(hn::Mul(hn::Max(across, dy), scale), hn::Set(kFloats, 0.25F));
        const VF n =
            hn::Max(hn::Mul(hn::Min(across, dy), scale), hn::Set(kFloats, kLeastComponent / 2));
        Edge edge{outerRadius, hn::Add(m, n), hn::Sub(m, n), hn::Div(hn::Set(kFloats, 32767.5F), m),
                  hn::Zero(kFloats)};
        edge.bend = hn::Div(hn::Mul(edge.slope, hn::Set(kFloats, 0.25F)), n);
        outerCover = coverage(distance, edge);
        edge.radius = innerRadius;
        innerCover = coverage(distance, edge);
    }
};

struct ChordRow : FloatRow {
    const float* outer;
    const float* inner;
    HWY_INLINE ChordRow(const CircleRows& rows, int row)
        : FloatRow(rows),
          outer(rows.outer.halfChords + row * kLinesPerRow),
          inner(rows.inner.halfChords + row * kLinesPerRow) {}
    HWY_INLINE void at(VF dx, VU16& outerCover, VU16& innerCover) const {
        outerCover = chordCoverage(dx, outer);
        innerCover = chordCoverage(dx, inner);
    }
};

// One row being drawn from left to right.
template <class Row>
class RowPen {
  public:
    HWY_INLINE RowPen(std::uint32_t* HWY_RESTRICT pixels, const CircleRows& rows, int row,
                      const TwoPaints& paints)
        : cover_(rows, row),
          paints_(paints),
          pixels_(pixels),
          x_(rows.begin[row]),
          clipRight_(rows.clip.right()) {}

    HWY_INLINE void edgesTo(int end) {
        auto place = cover_.placeOf(x_);
        for (; x_ < end; x_ += kLanes) {
            if (HWY_LIKELY(x_ + kLanes <= clipRight_)) {
                edge(pixels_ + x_, place);
            } else {
                std::uint32_t part[kLanes] = {};
                const std::size_t bytes = sizeof(part[0]) * std::size_t(clipRight_ - x_);
                std::memcpy(part, pixels_ + x_, bytes);
                edge(part, place);
                std::memcpy(pixels_ + x_, part, bytes);
            }
            place = Row::next(place);
        }
    }

    HWY_INLINE void solidTo(int end, const SolidPaint& paint) {
        for (; x_ + kLanes <= end; x_ += kLanes) {
            hn::StoreU(paint.over(hn::LoadU(kPixels, pixels_ + x_)), kPixels, pixels_ + x_);
        }
    }

  private:
    HWY_INLINE void edge(std::uint32_t* HWY_RESTRICT at, typename Row::Place place) const {
        VU16 outer, inner;
        cover_.at(place, outer, inner);
        hn::StoreU(paints_.over(hn::LoadU(kPixels, at), outer, inner), kPixels, at);
    }

    Row cover_;
    const TwoPaints& paints_;
    std::uint32_t* HWY_RESTRICT pixels_;
    int x_;
    int clipRight_;
};

struct Solids {
    SolidPaint rim, inside;
};

template <class Row>
HWY_INLINE void drawRow(std::uint32_t* HWY_RESTRICT pixels, const CircleRows& rows, int row,
                        const TwoPaints& paints, const Solids& solids) {
    RowPen<Row> pen(pixels, rows, row, paints);
    if (rows.wideRim) {
        pen.edgesTo(rows.leftRimBegin[row]);
        pen.solidTo(rows.leftRimEnd[row], solids.rim);
    }
    pen.edgesTo(rows.middleBegin[row]);
    pen.solidTo(rows.middleEnd[row], rows.middleIsRim[row] ? solids.rim : solids.inside);
    if (rows.wideRim) {
        pen.edgesTo(rows.rightRimBegin[row]);
        pen.solidTo(rows.rightRimEnd[row], solids.rim);
    }
    pen.edgesTo(rows.end[row]);
}

template <bool kSmall>
HWY_INLINE void drawRows(const RenderTarget& target, const CircleRows& rows,
                         const TwoPaints& paints, const Solids& solids) {
    for (int row = 0; row < rows.count; ++row) {
        std::uint32_t* pixels = target.pixels + std::ptrdiff_t{rows.firstRow + row} * target.stride;
        if constexpr (kSmall) {
            drawRow<ChordRow>(pixels, rows, row, paints, solids);
        } else if (rows.flat[row]) {
            drawRow<FlatRow>(pixels, rows, row, paints, solids);
        } else {
            drawRow<TangentRow>(pixels, rows, row, paints, solids);
        }
    }
}

HWY_NOINLINE void drawCircle(const RenderTarget& target, const PixelRect& clip,
                             const CircleLook& look, const Instance& instance, CircleRows& rows) {
    rows.circle = {instance.x, instance.y, look.radius * instance.scale,
                   look.innerRadius * instance.scale};
    rows.clip = clip;
    const float opacity = std::min(instance.opacity, 1.0F);
    const TwoPaints paints(look.rim.data(), look.inside.data(), opacity);
    const Solids solids{paints.solid(kCovered, 0), paints.solid(0, kCovered)};
    const int bottom = rows.prepare();
    while (rows.firstRow < bottom) {
        rows.count = std::min(kRowsAtOnce, bottom - rows.firstRow);
        if (rows.small()) {
            rows.computeChords();
            drawRows<true>(target, rows, paints, solids);
        } else {
            rows.computeTangents();
            drawRows<false>(target, rows, paints, solids);
        }
        rows.firstRow += rows.count;
    }
}

void drawAll(const RenderTarget& target, const PixelRect& clip, const CircleLook& look,
             std::span<const Instance> instances) {
    CircleRows rows;
    for (const Instance& instance : instances) {
        if (visible(instance, 2.0 * look.radius, look.strongestAlpha)) {
            drawCircle(target, clip, look, instance, rows);
        }
    }
}

}  // namespace
}  // namespace HWY_NAMESPACE
}  // namespace skavlo
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace skavlo {
HWY_EXPORT(drawAll);

void drawCircles(const RenderTarget& target, const PixelRect& clip, const CircleStyle& style,
                 std::span<const Instance> instances) {
    const PixelRect area = drawable(target, clip);
    const CircleLook look = circleLook(style);
    if (area.empty() || !(look.radius > 0)) return;
    HWY_DYNAMIC_DISPATCH(drawAll)(target, area, look, instances);
}

}  // namespace skavlo
#endif
