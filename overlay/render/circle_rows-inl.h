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
#ifndef XR
#define XR 6.0F
#endif
#ifndef XK
#define XK 0.05F
#endif
constexpr float kSmallRadius = XR;
// Half the diagonal of a pixel and a little: no edge that far from a centre touches the pixel.
constexpr float kReach = 0.72F;
// Rows beyond this part of a radius are flat: their edge's normal varies from pixel to pixel.
constexpr float kFlat = 0.9F;
// Least component of a normal, so that upright and level edges need no case of their own.
constexpr float kLeastComponent = 0.02F;
// From this width on, the rim has runs that are worth a constant colour.
constexpr float kWideRim = 12.0F;

struct Circle {
    float x, y, radius, innerRadius;
};

// See circles.cpp for the terms; slope is 65535 / m and bend 65535 / (2mn).
struct EdgeRows {
    HWY_ALIGN float sum[kRowsAtOnce];
    HWY_ALIGN float diff[kRowsAtOnce];
    HWY_ALIGN float slope[kRowsAtOnce];
    HWY_ALIGN float bend[kRowsAtOnce];
    HWY_ALIGN float halfChords[kRowsAtOnce * kLinesPerRow];
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
    // Pixels that are wholly inside, or wholly rim in rows that miss the inner disc.
    HWY_ALIGN std::int32_t middleBegin[kRowsAtOnce];
    HWY_ALIGN std::int32_t middleEnd[kRowsAtOnce];
    HWY_ALIGN std::int32_t middleIsRim[kRowsAtOnce];
    HWY_ALIGN std::int32_t flat[kRowsAtOnce];
    // Pixels of the rim left and right of the inside; only when wideRim.
    HWY_ALIGN std::int32_t leftRimBegin[kRowsAtOnce];
    HWY_ALIGN std::int32_t leftRimEnd[kRowsAtOnce];
    HWY_ALIGN std::int32_t rightRimBegin[kRowsAtOnce];
    HWY_ALIGN std::int32_t rightRimEnd[kRowsAtOnce];
    EdgeRows outer, inner;

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

    [[nodiscard]] HWY_INLINE bool hasInner() const { return circle.innerRadius > 0; }

    // Of the inner disc, or such that it covers nothing.
    [[nodiscard]] HWY_INLINE float coveringInnerRadius() const {
        return hasInner() ? tangentRadius(circle.innerRadius) : -1;
    }

    // Within a pixel the edge curves away from its tangent, by a mean of about 1/20 of a pixel
    // over the radius.
    [[nodiscard]] static HWY_INLINE float tangentRadius(float radius) {
        return radius - XK / radius;
    }

    [[nodiscard]] HWY_INLINE bool small() const {
        return circle.radius < kSmallRadius ||
               (hasInner() && circle.innerRadius < kSmallRadius);
    }

    HWY_INLINE void computeTangents() {
        for (int row = 0; row < count; row += kLanes) {
            const VF dy = heights(row);
            const VF square = hn::Mul(dy, dy);
            hn::Store(square, kFloats, dySquared + row);
            computeExtent(row, dy);
            computeMiddle(row, dy, square);
            computeFlat(row, dy);
            if (wideRim) computeRims(row, square);
            computeNormals(row, dy, circle.radius, outer);
            if (hasInner()) {
                computeNormals(row, dy, circle.innerRadius, inner);
            } else {
                noInner(row);
            }
        }
    }

    HWY_INLINE void computeChords() {
        wideRim = false;
        for (int row = 0; row < count; row += kLanes) {
            computeExtent(row, heights(row));
            const auto none = hn::Load(kInts, end + row);
            hn::Store(none, kInts, middleBegin + row);
            hn::Store(none, kInts, middleEnd + row);
            hn::Store(hn::Zero(kInts), kInts, middleIsRim + row);
        }
        computeHalfChords(circle.radius, outer);
        computeHalfChords(circle.innerRadius, inner);
    }

  private:
    static constexpr hn::RebindToSigned<decltype(kFloats)> kInts{};
    using VI = hn::Vec<decltype(kInts)>;

    // Of the rows' centres below the circle's.
    HWY_INLINE VF heights(int row) const {
        return hn::Sub(hn::Iota(kFloats, float(firstRow + row) + 0.5F),
                       hn::Set(kFloats, circle.y));
    }

    // A column, held to the clip before it becomes an integer.
    HWY_INLINE VI column(VF x) const {
        const VF held = hn::Max(hn::Min(x, hn::Set(kFloats, float(clip.right()))),
                                hn::Set(kFloats, float(clip.x)));
        return hn::ConvertTo(kInts, held);
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

    HWY_INLINE void computeMiddle(int row, VF dy, VF square) {
        const float reached = hasInner() ? circle.innerRadius + kReach : 0;
        const auto missed = hn::Ge(hn::Abs(dy), hn::Set(kFloats, reached));
        const VF limit = hn::IfThenElse(missed, solidRadius(circle.radius),
                                        solidRadius(circle.innerRadius));
        const VF left = hn::NegMulAdd(limit, limit, square);  // negative inside
        const auto some = hn::Lt(left, hn::Zero(kFloats));
        const VF half = hn::Sqrt(hn::IfThenElseZero(some, hn::Neg(left)));
        const auto any = hn::RebindMask(kInts, some);
        const VI none = hn::Load(kInts, end + row);
        hn::Store(hn::IfThenElse(any, firstWithin(half), none), kInts, middleBegin + row);
        hn::Store(hn::IfThenElse(any, endWithin(half), none), kInts, middleEnd + row);
        hn::Store(hn::VecFromMask(kInts, hn::RebindMask(kInts, missed)), kInts,
                  middleIsRim + row);
    }

    static HWY_INLINE VF solidRadius(float radius) {
        return hn::Set(kFloats, std::max(radius - kReach, 0.0F));
    }

    HWY_INLINE void computeRims(int row, VF square) {
        const VF outside = solidRadius(circle.radius);
        const VF clear = hn::Set(kFloats, circle.innerRadius + kReach);
        const VF far = hn::Sqrt(hn::ZeroIfNegative(hn::MulSub(outside, outside, square)));
        const VF near = hn::Sqrt(hn::ZeroIfNegative(hn::MulSub(clear, clear, square)));
        // Rows that miss the inside have one run, the middle: none to the left or right of it.
        const VI middle = hn::Load(kInts, middleBegin + row);
        const VI behind = hn::Load(kInts, middleEnd + row);
        hn::Store(hn::Min(firstWithin(far), middle), kInts, leftRimBegin + row);
        hn::Store(hn::Min(endWithin(hn::Neg(near)), middle), kInts, leftRimEnd + row);
        hn::Store(hn::Max(firstWithin(hn::Neg(near)), behind), kInts, rightRimBegin + row);
        hn::Store(endWithin(far), kInts, rightRimEnd + row);
    }

    HWY_INLINE void computeNormals(int row, VF dy, float radius, EdgeRows& edge) const {
        const VF one = hn::Set(kFloats, 1.0F);
        const VF half = hn::Set(kFloats, 0.5F);
        const VF sine = hn::Min(hn::Mul(hn::Abs(dy), hn::Set(kFloats, 1 / radius)), one);
        const VF cosine = hn::Sqrt(hn::NegMulAdd(sine, sine, one));
        const VF m = hn::Max(sine, cosine);
        const VF n = hn::Max(hn::Min(sine, cosine), hn::Set(kFloats, kLeastComponent));
        const VF slope = hn::Div(hn::Set(kFloats, 65535.0F), m);
        hn::Store(hn::Mul(half, hn::Add(m, n)), kFloats, edge.sum + row);
        hn::Store(hn::Mul(half, hn::Sub(m, n)), kFloats, edge.diff + row);
        hn::Store(slope, kFloats, edge.slope + row);
        hn::Store(hn::Div(hn::Mul(half, slope), n), kFloats, edge.bend + row);
    }

    HWY_INLINE void computeFlat(int row, VF dy) {
        const VF height = hn::Abs(dy);
        const auto beyond = [height](float limit) HWY_ATTR {
            return hn::Gt(height, hn::Set(kFloats, limit));
        };
        const auto outerFlat = beyond(kFlat * circle.radius);
        const auto innerFlat = hn::AndNot(beyond(coveringInnerRadius() + kReach),
                                          beyond(kFlat * circle.innerRadius));
        const auto any = hn::RebindMask(kInts, hn::Or(outerFlat, innerFlat));
        hn::Store(hn::VecFromMask(kInts, any), kInts, flat + row);
    }

    // An upright edge; its radius of -1 keeps it from covering anything.
    HWY_INLINE void noInner(int row) {
        hn::Store(hn::Set(kFloats, 0.5F), kFloats, inner.sum + row);
        hn::Store(hn::Set(kFloats, 0.5F), kFloats, inner.diff + row);
        hn::Store(hn::Set(kFloats, 65535.0F), kFloats, inner.slope + row);
        hn::Store(hn::Zero(kFloats), kFloats, inner.bend + row);
    }

    HWY_INLINE void computeHalfChords(float radius, EdgeRows& edge) const {
        const VF square = hn::Set(kFloats, radius * radius);
        const VF step = hn::Set(kFloats, 1.0F / kLinesPerRow);
        const float first = float(firstRow) + 0.5F / kLinesPerRow - circle.y;
        for (int line = 0; line < count * kLinesPerRow; line += kLanes) {
            const VF dy =
                hn::MulAdd(hn::Iota(kFloats, float(line)), step, hn::Set(kFloats, first));
            const VF half = hn::Sqrt(hn::ZeroIfNegative(hn::NegMulAdd(dy, dy, square)));
            hn::Store(half, kFloats, edge.halfChords + line);
        }
    }
};

}  // namespace
}  // namespace HWY_NAMESPACE
}  // namespace skavlo
HWY_AFTER_NAMESPACE();

#endif
