// Where the rows of one circle begin and end and what is solid in them, several rows at a time.
// Included once per SIMD target.
#if defined(SKAVLO_CIRCLE_ROWS_INL) == defined(HWY_TARGET_TOGGLE)
#ifdef SKAVLO_CIRCLE_ROWS_INL
#undef SKAVLO_CIRCLE_ROWS_INL
#else
#define SKAVLO_CIRCLE_ROWS_INL
#endif

#include <hwy/highway.h>

#include <cstring>

#include "overlay/render/blend-inl.h"
#include "overlay/render/visibility.h"

HWY_BEFORE_NAMESPACE();
namespace skavlo {
namespace HWY_NAMESPACE {
namespace {

constexpr int kRowsAtOnce = 64;
constexpr int kLinesPerRow = 8;
// Below this radius edges bend too much within a pixel to be taken for straight.
constexpr float kSmallRadius = 4.0F;
// Half the diagonal of a pixel and a little: no edge that far from a centre touches the pixel.
constexpr float kReach = 0.72F;
// Least component of a normal, so that upright and level edges need no case of their own.
constexpr float kLeastComponent = 0.015F;
// From this width on, the rim has runs that are worth a constant colour.
constexpr float kWideRim = 12.0F;
constexpr int kMostRuns = 3;
// Kept clear of runs, more than rounding could matter.
constexpr float kSlack = 0.01F;
// Beyond this, distances in a row are no longer counted in integers.
constexpr float kFarAway = 65536.0F;
constexpr int kPixelBits = 13;  // of the fraction of such distances
constexpr float kUnitsPerPixel = 1 << kPixelBits;

struct Circle {
    float x, y, radius, innerRadius;
};

// Both edges of a row as circle_cover-inl.h computes with them: in 1/8192 pixels and 16-bit
// factors, four times the outer edge's and four times the inner's.
struct RowEdges {
    HWY_ALIGN std::uint16_t sum[8];
    std::uint16_t diff[8];
    std::uint16_t slope[8];
    std::uint16_t power[8];
    std::uint16_t bend[8];
};

class CircleRows {
  public:
    Circle circle;
    PixelRect clip;
    int firstRow, count;
    bool wideRim;

    HWY_ALIGN float dySquared[kRowsAtOnce];
    HWY_ALIGN std::int32_t begin[kRowsAtOnce];
    HWY_ALIGN std::int32_t end[kRowsAtOnce];
    HWY_ALIGN std::int32_t flat[kRowsAtOnce];
    // From left to right a row has vectors that edges may cross, a run of one colour, again such
    // vectors, and so on; a run begins behind the vectors before it. With a wide rim three runs of
    // the rim, the middle and the rim, else the middle alone. Flat rows have none of all that.
    HWY_ALIGN std::int32_t edgesBegin[kMostRuns + 1][kRowsAtOnce];
    HWY_ALIGN std::int32_t edgesCount[kMostRuns + 1][kRowsAtOnce];
    HWY_ALIGN std::int32_t runBegin[kMostRuns][kRowsAtOnce];
    HWY_ALIGN std::int32_t runEnd[kMostRuns][kRowsAtOnce];
    HWY_ALIGN std::int32_t middleIsRim[kRowsAtOnce];
    HWY_ALIGN std::int32_t outerReach[kRowsAtOnce];  // mean distance from the middle to the edge
    HWY_ALIGN std::int32_t innerReach[kRowsAtOnce];
    HWY_ALIGN float outerHalfChords[kRowsAtOnce * kLinesPerRow];
    HWY_ALIGN float innerHalfChords[kRowsAtOnce * kLinesPerRow];
    RowEdges edges[kRowsAtOnce];

    // Sets the first row that is both of the circle and of the clip; returns the row behind the
    // last one.
    HWY_INLINE int prepare() {
        const float top = circle.y - circle.radius;
        const float bottom = circle.y + circle.radius;
        const auto held = [this](float y) {
            return int(std::clamp(y, float(clip.y), float(clip.bottom())));
        };
        firstRow = held(std::floor(top));
        wideRim = hasInner() && circle.radius - circle.innerRadius >= kWideRim;
        const bool beside = circle.x + circle.radius < float(clip.x) ||
                            circle.x - circle.radius > float(clip.right());
        return beside ? firstRow : held(std::ceil(bottom));
    }

    // A column that no vector begins behind; the edges of the clip count as well.
    [[nodiscard]] HWY_INLINE int rightmost() const {
        return int(std::min(circle.x + circle.radius, float(clip.right()))) + 1;
    }

    [[nodiscard]] HWY_INLINE int runs() const { return wideRim ? kMostRuns : 1; }

    [[nodiscard]] HWY_INLINE bool hasInner() const { return circle.innerRadius > 0; }

    // Of the inner disc, or such that it covers nothing.
    [[nodiscard]] HWY_INLINE float coveringInnerRadius() const {
        return hasInner() ? tangentRadius(circle.innerRadius) : -1;
    }

    // Within a pixel the edge curves away from its tangent, by a mean of about 1/20 of a pixel
    // over the radius.
    [[nodiscard]] static HWY_INLINE float tangentRadius(float radius) {
        return radius - 0.05F / radius;
    }

    [[nodiscard]] HWY_INLINE bool small() const {
        return circle.radius < kSmallRadius || (hasInner() && circle.innerRadius < kSmallRadius);
    }

    HWY_INLINE void computeTangents() {
        const bool far = circle.radius > kFarAway || std::fabs(circle.x) > kFarAway;
        for (int row = 0; row < count; row += kLanes) {
            const VF dy = heights(row);
            const VF square = hn::Mul(dy, dy);
            hn::Store(square, kFloats, dySquared + row);
            computeExtent(row, dy);
            const auto missed =
                hn::Ge(square, squared(hasInner() ? circle.innerRadius + kReach : 0));
            const RowEdge whole = rowEdge(circle.radius, hn::Abs(dy), square);
            // Rows that miss the inside get an upright edge, which covers nothing from far away.
            const RowEdge inside =
                rowEdge(circle.innerRadius, hn::IfThenZeroElse(missed, hn::Abs(dy)),
                        hn::IfThenZeroElse(missed, square));
            const auto isFlat = hn::Or(whole.flat, hn::AndNot(missed, inside.flat));
            const auto flatInt =
                far ? hn::Set(kInts, -1) : hn::VecFromMask(kInts, hn::RebindMask(kInts, isFlat));
            hn::Store(flatInt, kInts, flat + row);
            storeEdges(row, whole, inside, missed);
            computeRuns(row, whole, inside, missed);
        }
    }

    HWY_INLINE void computeChords() {
        wideRim = false;
        for (int row = 0; row < count; row += kLanes) {
            computeExtent(row, heights(row));
        }
        computeHalfChords(circle.radius, outerHalfChords);
        computeHalfChords(circle.innerRadius, innerHalfChords);
    }

  private:
    // Of the rows' centres below the circle's.
    HWY_INLINE VF heights(int row) const {
        return hn::Add(laneNumbers(), hn::Set(kFloats, float(firstRow + row) + 0.5F - circle.y));
    }

    // Of numbers less than 2^22, for which it takes fewer steps than a conversion.
    static HWY_INLINE VI rounded(VF v) {
        constexpr float kMagic = 12582912;  // 1.5 times 2^23: its last place is 1
        const VF magic = hn::Set(kFloats, kMagic);
        return hn::Sub(hn::BitCast(kInts, hn::Add(v, magic)), hn::BitCast(kInts, magic));
    }

    // A column, held to the clip before it becomes an integer.
    HWY_INLINE VI column(VF x) const {
        const VF held = hn::Max(hn::Min(x, hn::Set(kFloats, float(clip.right()))),
                                hn::Set(kFloats, float(clip.x)));
        return rounded(held);
    }

    // First and last pixel centre no further than `half` from the middle, the last exclusive.
    HWY_INLINE VI firstWithin(VF half) const {
        return column(hn::Ceil(hn::Sub(hn::Set(kFloats, circle.x - 0.5F), half)));
    }
    HWY_INLINE VI endWithin(VF half) const {
        return column(hn::Floor(hn::Add(hn::Set(kFloats, circle.x + 0.5F), half)));
    }

    HWY_INLINE void computeExtent(int row, VF dy) {
        const VF nearest = hn::ZeroIfNegative(hn::Sub(hn::Abs(dy), hn::Set(kFloats, 0.5F)));
        const VF square = hn::Set(kFloats, circle.radius * circle.radius);
        const VF half = hn::Sqrt(hn::ZeroIfNegative(hn::NegMulAdd(nearest, nearest, square)));
        const VF x = hn::Set(kFloats, circle.x);
        hn::Store(column(hn::Floor(hn::Sub(x, half))), kInts, begin + row);
        hn::Store(column(hn::Ceil(hn::Add(x, half))), kInts, end + row);
    }

    using Mask = hn::Mask<decltype(kFloats)>;

    static HWY_INLINE VF squared(float v) { return hn::Set(kFloats, v * v); }

    struct RowEdge {
        VF solid;  // pixel centres no further from the middle are wholly covered
        VF clear;  // pixel centres further from the middle are not covered
        Mask flat;
        VI reach, sum, diff, slope, power, bend;
    };

    static HWY_INLINE VI units(VF pixels) {
        return rounded(hn::Mul(pixels, hn::Set(kFloats, kUnitsPerPixel)));
    }

    // Over the height of a row the edge of a disc is about a straight line: it runs w = dy / h
    // across, h being the half chord in the row's middle, and its mean distance from the middle is
    // h - r^2 / (24 h^3), the second derivative's share.
    static HWY_INLINE RowEdge rowEdge(float radius, VF height, VF square) {
        const VF one = hn::Set(kFloats, 1.0F);
        const VF half = hn::Set(kFloats, 0.5F);
        const float least = 2 + radius / 6;
        const VF squareOfChord = hn::Sub(squared(radius), square);
        RowEdge edge;
        edge.flat = hn::Lt(squareOfChord, squared(least));
        const VF chord = hn::Sqrt(hn::Max(squareOfChord, one));
        const VF inverse = hn::Div(one, chord);
        const VF across = hn::Mul(height, inverse);
        const VF bulge = hn::Mul(hn::Mul(inverse, inverse), hn::Mul(inverse, squared(radius)));
        const VF mean = hn::NegMulAdd(bulge, hn::Set(kFloats, 1.0F / 24), chord);
        const VF m = hn::Max(across, one);
        const VF n = hn::Max(hn::Min(across, one), hn::Set(kFloats, kLeastComponent));
        const VF sum = hn::Mul(half, hn::Add(m, n));
        edge.solid = hn::Sub(mean, sum);
        edge.clear = hn::Add(mean, sum);
        edge.reach = hn::ConvertTo(kInts, hn::Mul(mean, hn::Set(kFloats, kUnitsPerPixel)));
        edge.sum = units(sum);
        edge.diff = units(hn::Mul(half, hn::Sub(m, n)));
        bends(edge, m);
        return edge;
    }

    // z is scaled by a power of two to use all 16 bits before it is squared. The bend is made a
    // trifle too weak, so that rounding never keeps a covered pixel from being wholly covered.
    static HWY_INLINE void bends(RowEdge& edge, VF m) {
        const VF inverse = hn::Div(hn::Set(kFloats, 1.0F), m);
        edge.slope = rounded(hn::Mul(inverse, hn::Set(kFloats, 65535.0F)));
        const VF n = hn::ConvertTo(kFloats, hn::Sub(edge.sum, edge.diff));
        const VI exponent = hn::ShiftRight<23>(hn::BitCast(kInts, n));
        const VI power = hn::ShiftLeft<23>(hn::Sub(hn::Set(kInts, 15 + 127 + 127), exponent));
        edge.power = rounded(hn::BitCast(kFloats, power));
        const VF most = hn::Mul(n, hn::BitCast(kFloats, power));
        const VF bend =
            hn::MulSub(hn::Mul(n, inverse), hn::Set(kFloats, 0.5F), hn::Set(kFloats, 4.0F));
        const VF full = hn::Set(kFloats, 65536.0F * 65536.0F);
        edge.bend = rounded(hn::Div(hn::Mul(hn::ZeroIfNegative(bend), full), hn::Mul(most, most)));
    }

    HWY_INLINE void storeEdges(int row, const RowEdge& whole, const RowEdge& inside, Mask missed) {
        storeRows(whole.sum, inside.sum, edges[row].sum);
        storeRows(whole.diff, inside.diff, edges[row].diff);
        storeRows(whole.slope, inside.slope, edges[row].slope);
        storeRows(whole.power, inside.power, edges[row].power);
        storeRows(whole.bend, inside.bend, edges[row].bend);
        hn::Store(whole.reach, kInts, outerReach + row);
        const VI nowhere = hn::Set(kInts, -(1 << 29));
        hn::Store(hn::IfThenElse(hn::RebindMask(kInts, missed), nowhere, inside.reach), kInts,
                  innerReach + row);
    }

    // Spreads one value per row to the eight that the row keeps; `first` is the first row's.
    static HWY_INLINE void storeRows(VI outer, VI inner, std::uint16_t* first) {
        storeFour<0>(hn::Or(outer, hn::ShiftLeft<16>(inner)), first);
        storeFour<1>(hn::Or(outer, hn::ShiftLeft<16>(inner)), first);
        storeFour<2>(hn::Or(outer, hn::ShiftLeft<16>(inner)), first);
        storeFour<3>(hn::Or(outer, hn::ShiftLeft<16>(inner)), first);
    }

    // The rows of every fourth lane.
    template <int kLane>
    static HWY_INLINE void storeFour(VI pairs, std::uint16_t* first) {
        constexpr std::uint8_t a = 4 * kLane;
        static constexpr std::uint8_t kPattern[16] = {a,     a + 1, a,     a + 1, a,     a + 1,
                                                      a,     a + 1, a + 2, a + 3, a + 2, a + 3,
                                                      a + 2, a + 3, a + 2, a + 3};
        const hn::Repartition<std::uint8_t, decltype(kInts)> kAll;
        const auto rows =
            hn::TableLookupBytes(hn::BitCast(kAll, pairs), hn::LoadDup128(kAll, kPattern));
        const auto at = [first](int row) HWY_ATTR {
            return reinterpret_cast<std::uint8_t*>(first) + row * kRowBytes;
        };
        if constexpr (kLanes == 8) {
            const hn::Half<decltype(kAll)> kHalf;
            hn::StoreU(hn::LowerHalf(kHalf, rows), kHalf, at(kLane));
            hn::StoreU(hn::UpperHalf(kHalf, rows), kHalf, at(kLane + 4));
        } else {
            hn::StoreU(rows, kAll, at(kLane));
        }
    }
    static constexpr std::ptrdiff_t kRowBytes = sizeof(RowEdges);

    HWY_INLINE void computeRuns(int row, const RowEdge& whole, const RowEdge& inside, Mask missed) {
        hn::Store(hn::VecFromMask(kInts, hn::RebindMask(kInts, missed)), kInts, middleIsRim + row);
        const VI rowEnd = hn::Load(kInts, end + row);
        const VI rowFlat = hn::Load(kInts, flat + row);
        const VI rowBegin = hn::IfVecThenElse(rowFlat, rowEnd, hn::Load(kInts, begin + row));
        const VF slack = hn::Set(kFloats, kSlack);
        const VF half = hn::Sub(hn::IfThenElse(missed, whole.solid, inside.solid), slack);
        const VI first = hn::Min(hn::Max(firstWithin(half), rowBegin), rowEnd);
        const VI behind = hn::Max(endWithin(half), first);
        if (!wideRim) {
            const VI x = layRun(0, row, rowBegin, {first, behind, rowEnd});
            layEdges(1, row, x, rowEnd);
            return;
        }
        // Rows that miss the inside have one run, the middle: none to the left or right of it.
        const auto alone = hn::RebindMask(kInts, missed);
        const VF far = hn::Sub(whole.solid, slack);
        const VF near = hn::Neg(hn::Add(inside.clear, slack));
        const VI left = hn::IfThenElse(alone, first, hn::Min(firstWithin(far), first));
        const VI leftEnd = hn::IfThenElse(alone, first, hn::Min(endWithin(near), first));
        const VI right = hn::IfThenElse(alone, rowEnd, hn::Max(firstWithin(near), behind));
        const VI rightEnd = hn::IfThenElse(alone, rowEnd, hn::Max(endWithin(far), behind));
        VI x = layRun(0, row, rowBegin, {left, leftEnd, first});
        x = layRun(1, row, x, {first, behind, hn::Min(right, rowEnd)});
        x = layRun(2, row, x, {right, hn::Min(rightEnd, rowEnd), rowEnd});
        layEdges(3, row, x, rowEnd);
    }

    struct Run {
        VI begin, end;
        VI next;  // where the vectors behind the run should end
    };

    static HWY_INLINE VI vectorsFor(VI pixels) {
        constexpr int kShift = kLanes == 8 ? 3 : 2;
        static_assert(kLanes == 1 << kShift);
        return hn::ShiftRight<kShift>(
            hn::Add(hn::Max(pixels, hn::Zero(kInts)), hn::Set(kInts, kLanes - 1)));
    }
    static HWY_INLINE VI pixelsOf(VI vectors) { return hn::Mul(vectors, hn::Set(kInts, kLanes)); }

    HWY_INLINE VI layEdges(int index, int row, VI x, VI until) {
        const VI vectors = vectorsFor(hn::Sub(until, x));
        hn::Store(x, kInts, edgesBegin[index] + row);
        hn::Store(vectors, kInts, edgesCount[index] + row);
        return hn::Add(x, pixelsOf(vectors));
    }

    // Returns where the run ends. Where that spares a vector of edges behind it, that is whole
    // vectors before `next`, the last vector of the run being filled in part; else it is filled.
    HWY_INLINE VI layRun(int index, int row, VI x, const Run& run) {
        const VI from = layEdges(index, row, x, run.begin);
        const VI rest = vectorsFor(hn::Sub(run.next, run.end));
        const VI whole = hn::Add(from, hn::And(hn::Max(hn::Sub(run.end, from), hn::Zero(kInts)),
                                               hn::Set(kInts, -kLanes)));
        const auto more = hn::Gt(vectorsFor(hn::Sub(run.next, whole)), rest);
        const VI filled = hn::Max(hn::Sub(run.next, pixelsOf(rest)), from);
        const VI to = hn::IfThenElse(more, filled, whole);
        hn::Store(from, kInts, runBegin[index] + row);
        hn::Store(to, kInts, runEnd[index] + row);
        return to;
    }

    HWY_INLINE void computeHalfChords(float radius, float* halfChords) const {
        const VF square = hn::Set(kFloats, radius * radius);
        const VF step = hn::Set(kFloats, 1.0F / kLinesPerRow);
        const float first = float(firstRow) + 0.5F / kLinesPerRow - circle.y;
        for (int line = 0; line < count * kLinesPerRow; line += kLanes) {
            const VF dy = hn::MulAdd(hn::Add(laneNumbers(), hn::Set(kFloats, float(line))), step,
                                     hn::Set(kFloats, first));
            const VF half = hn::Sqrt(hn::ZeroIfNegative(hn::NegMulAdd(dy, dy, square)));
            hn::Store(half, kFloats, halfChords + line);
        }
    }
};

}  // namespace
}  // namespace HWY_NAMESPACE
}  // namespace skavlo
HWY_AFTER_NAMESPACE();

#endif
