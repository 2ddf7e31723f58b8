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
    std::int32_t x;
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

// The rows of one circle being drawn.
struct Canvas {
    std::uint32_t* firstRow;
    std::ptrdiff_t stride;
    const CircleRows& rows;
    const Brush& brush;

    [[nodiscard]] HWY_INLINE std::uint32_t* at(int x, int row) const {
        return firstRow + row * stride + x;
    }
    // Calls `draw` with the eight pixels from x on, which are others where the clip has fewer.
    template <class Draw>
    HWY_INLINE void with(int x, int row, const Draw& draw) const {
        const int room = rows.clip.right() - x;
        if (HWY_LIKELY(room >= kLanes)) {
            draw(at(x, row));
        } else {
            withPart(at(x, row), room, draw);
        }
    }
};

// The edges' pixels of many rows one after the other: in one loop, whose end alone is a surprise.
HWY_NOINLINE void drawUnits(const EdgeUnit* units, int count, const Canvas& canvas) {
    const Brush& brush = canvas.brush;
    const auto origin = std::int32_t((0.5F - canvas.rows.circle.x) * kUnitsPerPixel);
    for (int i = 0; i < count; ++i) {
        const EdgeUnit unit = units[i];
        canvas.with(unit.x, unit.row, [&](std::uint32_t* at) HWY_ATTR {
            VU16 outer, inner;
            const std::int32_t place = origin + unit.x * (1 << kPixelBits);
            TangentRow(canvas.rows, unit.row, brush.constants).at(place, outer, inner);
            hn::StoreU(brush.paints.over(hn::LoadU(kPixels, at), outer, inner), kPixels, at);
        });
    }
}

HWY_NOINLINE void drawEdges(const Canvas& canvas, int index) {
    EdgeUnit units[kMostUnits];
    int count = 0;
    const CircleRows& rows = canvas.rows;
    for (int row = 0; row < rows.count; ++row) {
        const int x = rows.edgesBegin[index][row];
        const int more = rows.edgesCount[index][row];
        if (HWY_UNLIKELY(count + std::max(more, 2) > kMostUnits)) {
            drawUnits(units, count, canvas);
            count = 0;
        }
        // Mostly there are no more than two: writing them all the same spares a branch.
        units[count] = {x, row};
        units[count + 1] = {x + kLanes, row};
        for (int i = 2; HWY_UNLIKELY(i < more); ++i) {
            if (count + i == kMostUnits) {
                drawUnits(units, kMostUnits, canvas);
                count = -i;
            }
            units[count + i] = {x + i * kLanes, row};
        }
        count += more;
    }
    drawUnits(units, count, canvas);
}

HWY_NOINLINE void drawRuns(const Canvas& canvas, int index) {
    const CircleRows& rows = canvas.rows;
    const bool middle = index == rows.runs() / 2;
    for (int row = 0; row < rows.count; ++row) {
        const int end = rows.runEnd[index][row];
        const SolidPaint& paint =
            middle && !rows.middleIsRim[row] ? canvas.brush.inside : canvas.brush.rim;
        int x = rows.runBegin[index][row];
        for (; x + kLanes <= end; x += kLanes) {
            std::uint32_t* at = canvas.at(x, row);
            hn::StoreU(paint.over(hn::LoadU(kPixels, at)), kPixels, at);
        }
        if (x >= end) continue;
        canvas.with(x, row, [&](std::uint32_t* at) HWY_ATTR {
            const auto below = hn::LoadU(kPixels, at);
            const auto mask = hn::FirstN(kPixels, std::size_t(end - x));
            hn::StoreU(hn::IfThenElse(mask, paint.over(below), below), kPixels, at);
        });
    }
}

template <class Row>
HWY_NOINLINE void drawRow(const Canvas& canvas, int row) {
    const Row cover(canvas.rows, row);
    for (int x = canvas.rows.begin[row]; x < canvas.rows.end[row]; x += kLanes) {
        canvas.with(x, row, [&](std::uint32_t* at) HWY_ATTR {
            VU16 outer, inner;
            cover.at(cover.placeOf(x), outer, inner);
            const auto below = hn::LoadU(kPixels, at);
            hn::StoreU(canvas.brush.paints.over(below, outer, inner), kPixels, at);
        });
    }
}

HWY_INLINE void drawTangents(const Canvas& canvas) {
    for (int i = 0; i < canvas.rows.runs(); ++i) {
        drawRuns(canvas, i);
        drawEdges(canvas, i);
    }
    drawEdges(canvas, canvas.rows.runs());
    for (int row = 0; row < canvas.rows.count; ++row) {
        if (canvas.rows.flat[row]) drawRow<FlatRow>(canvas, row);
    }
}

HWY_INLINE void drawChords(const Canvas& canvas) {
    for (int row = 0; row < canvas.rows.count; ++row) drawRow<ChordRow>(canvas, row);
}

HWY_NOINLINE void drawCircle(const RenderTarget& target, const PixelRect& clip,
                             const CircleLook& look, const Instance& instance, CircleRows& rows) {
    rows.circle = {instance.x, instance.y, look.radius * instance.scale,
                   look.innerRadius * instance.scale};
    rows.clip = clip;
    const Brush brush(look, std::min(instance.opacity, 1.0F));
    const int bottom = rows.prepare();
    while (rows.firstRow < bottom) {
        rows.count = std::min(kRowsAtOnce, bottom - rows.firstRow);
        std::uint32_t* pixels = target.pixels + std::ptrdiff_t{rows.firstRow} * target.stride;
        const Canvas canvas{pixels, target.stride, rows, brush};
        if (rows.small()) {
            rows.computeChords();
            drawChords(canvas);
        } else {
            rows.computeTangents();
            drawTangents(canvas);
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
