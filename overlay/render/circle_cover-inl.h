// What part of each pixel of a row is covered by a disc and by the disc inside its border, eight
// pixels at a time. Included once per SIMD target.
//
// Seen from one pixel, the edge is a straight line at the signed distance e, whose normal has the
// components m >= n >= 0. The covered part of the unit square is then
//     1/2 + e/m - z|z| / (2mn),   e held to +-(m+n)/2, z the part of e beyond +-(m-n)/2,
// straight in the middle and bending into the two corners.
//  - Mostly the distance is taken along the row (TangentRow). There the edge runs w across in a
//  row,
//    and m and n are the greater and the lesser of w and 1.
//  - Where the edge runs nearly along the row, every pixel gets its own normal (FlatRow).
//  - Discs too small for tangents are integrated along eight lines per row (ChordRow).
#if defined(SKAVLO_CIRCLE_COVER_INL) == defined(HWY_TARGET_TOGGLE)
#ifdef SKAVLO_CIRCLE_COVER_INL
#undef SKAVLO_CIRCLE_COVER_INL
#else
#define SKAVLO_CIRCLE_COVER_INL
#endif

#include <hwy/highway.h>

#include "overlay/render/circle_rows-inl.h"

HWY_BEFORE_NAMESPACE();
namespace skavlo {
namespace HWY_NAMESPACE {
namespace {

// Kept in memory, as compilers otherwise make each of them anew for every vector.
struct TangentConstants {
    VI steps;
    VU16 mostHalf, middle;
    HWY_INLINE TangentConstants()
        : steps(hn::ShiftLeft<kPixelBits>(hn::ConvertTo(kInts, laneNumbers()))),
          mostHalf(hn::Set(kHalves, std::uint16_t{0x7FFF})),
          middle(hn::Set(kHalves, std::uint16_t{0x8000})) {}
};

// Both edges of a row in 16-bit integers, in turns four lanes of the outer and four of the inner.
// Distances count 1/8192 pixels, as do coverages until they are scaled up at the end.
class TangentRow {
  public:
    using Place = VI;

    HWY_INLINE TangentRow(const CircleRows& rows, int row, const TangentConstants& constants)
        : edges_(rows.edges[row]),
          outerReach_(hn::Set(kInts, rows.outerReach[row])),
          innerReach_(hn::Set(kInts, rows.innerReach[row])),
          constants_(constants) {}

    // `place` counts from the circle's middle to the first pixel's.
    HWY_INLINE void at(std::int32_t place, VU16& outerCover, VU16& innerCover) const {
        const VI across = hn::Abs(hn::Add(hn::Set(kInts, place), constants_.steps));
        const auto t = hn::ReorderDemote2To(kShorts, hn::Sub(outerReach_, across),
                                            hn::Sub(innerReach_, across));
        const VU16 held = hn::Min(hn::BitCast(kHalves, hn::Abs(t)), both(edges_.sum));
        const VU16 z = hn::Mul(hn::SaturatedSub(held, both(edges_.diff)), both(edges_.power));
        const VU16 bent = hn::MulHigh(hn::MulHigh(z, z), both(edges_.bend));
        const VU16 part = hn::Sub(hn::MulHigh(held, both(edges_.slope)), bent);
        const VU16 half = hn::Min(hn::ShiftLeft<16 - kPixelBits>(part), constants_.mostHalf);
        const VU16 sign = hn::BitCast(kHalves, hn::ShiftRight<15>(t));
        const VU16 cover = hn::Add(hn::Xor(half, sign), constants_.middle);
        outerCover = hn::InterleaveLower(kHalves, cover, cover);
        innerCover = hn::InterleaveUpper(kHalves, cover, cover);
    }

  private:
    static constexpr hn::RebindToSigned<decltype(kHalves)> kShorts{};

    static HWY_INLINE VU16 both(const std::uint16_t* four) { return hn::LoadDup128(kHalves, four); }

    const RowEdges& edges_;
    VI outerReach_, innerReach_;
    const TangentConstants& constants_;
};

struct Edge {
    VF sum, diff, slope, bend;
};

// Rounds 0 to kCovered to an integer in both halves of each lane.
HWY_INLINE VU16 toCoverage(VF value) {
    const VF held = hn::Min(value, hn::Set(kFloats, float{kCovered}));
    const auto bits = hn::BitCast(kPixels, hn::Add(held, hn::Set(kFloats, 8388608.0F)));
    return hn::OddEven(hn::BitCast(kHalves, hn::ShiftLeft<16>(bits)), hn::BitCast(kHalves, bits));
}

HWY_INLINE VU16 coverage(VF e, const Edge& edge) {
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

// Places as floats, for the other kinds of rows.
class FloatRow {
  public:
    using Place = VF;
    explicit HWY_INLINE FloatRow(const CircleRows& rows)
        : firstCentre_(hn::Sub(laneNumbers(), hn::Set(kFloats, rows.circle.x - 0.5F))) {}
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
// Everything is multiplied by the distance d, so that one division is enough: M = md, N = nd.
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
        const VF m = hn::Max(hn::Max(across, dy), half);
        const VF least = hn::Mul(m, hn::Set(kFloats, kLeastComponent));
        const VF n = hn::Max(hn::Min(across, dy), least);
        const VF inverse = hn::Div(hn::Set(kFloats, 65535.0F), hn::Mul(m, n));
        const Edge edge{hn::Mul(half, hn::Add(m, n)), hn::Mul(half, hn::Sub(m, n)),
                        hn::Mul(inverse, n), hn::Mul(inverse, half)};
        outerCover = coverage(hn::Mul(distance, hn::Sub(outerRadius, distance)), edge);
        innerCover = coverage(hn::Mul(distance, hn::Sub(innerRadius, distance)), edge);
    }
};

struct ChordRow : FloatRow {
    const float* outer;
    const float* inner;
    HWY_INLINE ChordRow(const CircleRows& rows, int row)
        : FloatRow(rows),
          outer(rows.outerHalfChords + row * kLinesPerRow),
          inner(rows.innerHalfChords + row * kLinesPerRow) {}
    HWY_INLINE void at(VF dx, VU16& outerCover, VU16& innerCover) const {
        outerCover = chordCoverage(dx, outer);
        innerCover = chordCoverage(dx, inner);
    }
};

}  // namespace
}  // namespace HWY_NAMESPACE
}  // namespace skavlo
HWY_AFTER_NAMESPACE();

#endif
