// Circles with exact area coverage, eight pixels at a time.
//
// The look of a pixel is opacity * (rim * (Co - Ci) + inside * Ci), Co and Ci being the covered
// part of the pixel by the whole disc and by the disc inside the border: linear in the coverages,
// hence what averaging a far finer drawing gives.
//
// See circle_cover-inl.h for the coverages.
#include "overlay/render/circle_look.h"
#include "overlay/render/visibility.h"

// Scalable vectors cannot be members, which this file makes use of.
#define HWY_DISABLED_TARGETS (HWY_SVE | HWY_SVE2 | HWY_SVE_256 | HWY_SVE2_128 | HWY_RVV)
#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "overlay/render/circles.cpp"
#include <hwy/foreach_target.h>  // IWYU pragma: keep
#include <hwy/highway.h>

#include "overlay/render/circle_cover-inl.h"

HWY_BEFORE_NAMESPACE();
namespace skavlo {
namespace HWY_NAMESPACE {
namespace {

// Eight pixels that an edge may cross.
struct EdgeUnit {
    std::uint32_t* at;
    std::int32_t place;  // of the first pixel's middle, from the circle's, in 1/8192 pixels
    std::int32_t row;
};

constexpr int kMostUnits = 512;

struct Brush {
    HWY_INLINE Brush(const CircleLook& look, float opacity)
        : paints(look.rim.data(), look.inside.data(), opacity),
          rim(paints.solid(kCovered, 0)),
          inside(paints.solid(0, kCovered)) {}

    TwoPaints paints;
    SolidPaint rim, inside;
    TangentConstants constants;
};

// Calls `draw` with eight pixels to read and write, of which only `count` exist.
template <class Draw>
HWY_INLINE void withPart(std::uint32_t* at, int count, const Draw& draw) {
    std::uint32_t part[kLanes] = {};
    const std::size_t bytes = sizeof(part[0]) * std::size_t(count);
    std::memcpy(part, at, bytes);
    draw(part);
    std::memcpy(at, part, bytes);
}

HWY_INLINE void drawEdge(std::uint32_t* HWY_RESTRICT at, const RowEdges& edges, std::int32_t place,
                         const Brush& brush) {
    VU16 outer, inner;
    TangentRow(edges, brush.constants).at(place, outer, inner);
    hn::StoreU(brush.paints.over(hn::LoadU(kPixels, at), outer, inner), kPixels, at);
}

// The edges' pixels of many rows one after the other: in one loop, whose end alone is a surprise.
HWY_NOINLINE void drawUnits(const EdgeUnit* units, int count, const RowEdges* edges,
                            const Brush& brush) {
    for (int i = 0; i < count; ++i) {
        drawEdge(units[i].at, edges[units[i].row], units[i].place, brush);
    }
}

// Draws the rows of one circle: constant colours at once, edges when enough of them have gathered.
class CirclePen {
  public:
    HWY_INLINE CirclePen(const RenderTarget& target, const CircleRows& rows, const Brush& brush)
        : target_(target),
          rows_(rows),
          brush_(brush),
          clipRight_(rows.clip.right()),
          origin_(std::int32_t((0.5F - rows.circle.x) * kUnitsPerPixel)) {}

    HWY_INLINE void drawTangents() {
        for (row_ = 0; row_ < rows_.count; ++row_) {
            startRow();
            if (rows_.flat[row_]) {
                drawFloats<FlatRow>();
            } else {
                drawRow();
            }
        }
        flush();
    }

    HWY_INLINE void drawChords() {
        for (row_ = 0; row_ < rows_.count; ++row_) {
            startRow();
            drawFloats<ChordRow>();
        }
    }

  private:
    HWY_INLINE void startRow() {
        pixels_ = target_.pixels + std::ptrdiff_t{rows_.firstRow + row_} * target_.stride;
        x_ = rows_.begin[row_];
    }

    HWY_INLINE void drawRow() {
        const int end = rows_.end[row_];
        const SolidPaint& middle = rows_.middleIsRim[row_] ? brush_.rim : brush_.inside;
        if (HWY_LIKELY(!rows_.wideRim)) {
            edgesTo(rows_.middleBegin[row_]);
            solidTo(rows_.middleEnd[row_], end, middle);
            edgesTo(end);
            return;
        }
        edgesTo(rows_.leftRimBegin[row_]);
        solidTo(rows_.leftRimEnd[row_], rows_.middleBegin[row_], brush_.rim);
        edgesTo(rows_.middleBegin[row_]);
        solidTo(rows_.middleEnd[row_], rows_.rightRimBegin[row_], middle);
        edgesTo(rows_.rightRimBegin[row_]);
        solidTo(rows_.rightRimEnd[row_], end, brush_.rim);
        edgesTo(end);
    }

    HWY_INLINE void edgesTo(int end) {
        for (; x_ < end; x_ += kLanes) {
            const std::int32_t place = origin_ + x_ * (1 << kPixelBits);
            if (HWY_UNLIKELY(x_ + kLanes > clipRight_)) {
                withPart(pixels_ + x_, clipRight_ - x_, [&](std::uint32_t* part) HWY_ATTR {
                    drawEdge(part, rows_.edges[row_], place, brush_);
                });
                continue;
            }
            units_[count_++] = {pixels_ + x_, place, row_};
            if (HWY_UNLIKELY(count_ == kMostUnits)) flush();
        }
    }

    // From here to `end` all is one colour. Goes on to where the edges' pixels from there to
    // `next` begin, if these are to be whole vectors.
    HWY_INLINE void solidTo(int end, int next, const SolidPaint& paint) {
        const int stop = next - (std::max(next - end, 0) + kLanes - 1) / kLanes * kLanes;
        if (stop <= x_) return;
        for (; x_ + kLanes <= stop; x_ += kLanes) {
            hn::StoreU(paint.over(hn::LoadU(kPixels, pixels_ + x_)), kPixels, pixels_ + x_);
        }
        if (x_ == stop) return;
        if (HWY_LIKELY(x_ + kLanes <= clipRight_)) {
            const auto mask = hn::FirstN(kPixels, std::size_t(stop - x_));
            const auto below = hn::LoadU(kPixels, pixels_ + x_);
            hn::StoreU(hn::IfThenElse(mask, paint.over(below), below), kPixels, pixels_ + x_);
        } else {
            withPart(pixels_ + x_, stop - x_, [&](std::uint32_t* part) HWY_ATTR {
                hn::StoreU(paint.over(hn::LoadU(kPixels, part)), kPixels, part);
            });
        }
        x_ = stop;
    }

    template <class Row>
    HWY_INLINE void drawFloats() {
        const Row cover(rows_, row_);
        const auto draw = [&](std::uint32_t* at) HWY_ATTR {
            VU16 outer, inner;
            cover.at(cover.placeOf(x_), outer, inner);
            hn::StoreU(brush_.paints.over(hn::LoadU(kPixels, at), outer, inner), kPixels, at);
        };
        for (const int end = rows_.end[row_]; x_ < end; x_ += kLanes) {
            if (HWY_LIKELY(x_ + kLanes <= clipRight_)) {
                draw(pixels_ + x_);
            } else {
                withPart(pixels_ + x_, clipRight_ - x_, draw);
            }
        }
    }

    HWY_INLINE void flush() {
        drawUnits(units_, count_, rows_.edges, brush_);
        count_ = 0;
    }

    const RenderTarget& target_;
    const CircleRows& rows_;
    const Brush& brush_;
    std::uint32_t* pixels_ = nullptr;
    int row_ = 0;
    int x_ = 0;
    int count_ = 0;
    const int clipRight_;
    const std::int32_t origin_;
    EdgeUnit units_[kMostUnits];
};

HWY_NOINLINE void drawCircle(const RenderTarget& target, const PixelRect& clip,
                             const CircleLook& look, const Instance& instance, CircleRows& rows) {
    rows.circle = {instance.x, instance.y, look.radius * instance.scale,
                   look.innerRadius * instance.scale};
    rows.clip = clip;
    const Brush brush(look, std::min(instance.opacity, 1.0F));
    const int bottom = rows.prepare();
    while (rows.firstRow < bottom) {
        rows.count = std::min(kRowsAtOnce, bottom - rows.firstRow);
        CirclePen pen(target, rows, brush);
        if (rows.small()) {
            rows.computeChords();
            pen.drawChords();
        } else {
            rows.computeTangents();
            pen.drawTangents();
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
