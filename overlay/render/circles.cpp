// Circles with exact area coverage, eight pixels at a time.
//
// The look of a pixel is opacity * (rim * (Co - Ci) + inside * Ci), Co and Ci being the covered
// part of the pixel by the whole disc and by the disc inside the border: linear in the coverages,
// hence what averaging a far finer drawing gives.
//
// See circle_cover-inl.h for the coverages.
#include "overlay/render/bands.h"
#include "overlay/render/visibility.h"

// Scalable vectors cannot be members, which this file makes use of.
#define HWY_DISABLED_TARGETS (HWY_SVE | HWY_SVE2 | HWY_SVE_256 | HWY_SVE2_128 | HWY_RVV)
#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "overlay/render/circles.cpp"
#include <hwy/cache_control.h>
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
constexpr float kFetched = 32.0F;  // of a circle's radius: what is larger takes its time anyway

// Read from 8 - n on, the first n lanes are set.
HWY_ALIGN constexpr std::uint32_t kFirstLanes[16] = {~0U, ~0U, ~0U, ~0U, ~0U, ~0U, ~0U, ~0U};

struct Brush {
    HWY_INLINE Brush(const PreparedCircle& circle, float opacity)
        : paints(circle.rim.data(), circle.inside.data(), opacity),
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

HWY_INLINE void drawUnit(const EdgeUnit& unit, std::uint32_t* at, std::int32_t origin,
                         const CircleRows& rows, const Brush& brush) {
    VU16 outer, inner;
    const std::int32_t place = origin + unit.x * (1 << kPixelBits);
    TangentRow(rows, unit.row, brush.constants).at(place, outer, inner);
    hn::StoreU(brush.paints.over(hn::LoadU(kPixels, at), outer, inner), kPixels, at);
}

HWY_INLINE std::int32_t originOf(const CircleRows& rows) {
    return std::int32_t((0.5F - rows.circle.x) * kUnitsPerPixel);
}

// The vectors of many rows one after the other: in one loop, whose end alone is a surprise.
HWY_NOINLINE void drawUnits(const EdgeUnit* unit, const EdgeUnit* end, const Canvas& shared) {
    if (unit == end) return;
    const Canvas canvas = shared;  // stores of vectors may change anything that others can see
    const std::int32_t origin = originOf(canvas.rows);
    for (; unit < end; ++unit) {
        drawUnit(*unit, canvas.at(unit->x, unit->row), origin, canvas.rows, canvas.brush);
    }
}

// Gathers the vectors that edges may cross, and draws them when they are many.
class EdgeList {
  public:
    explicit HWY_INLINE EdgeList(const Canvas& canvas)
        : canvas_(canvas),
          // Vectors begin within the circle's bounds.
          few_(canvas.rows.rightmost() + kLanes <= canvas.rows.clip.right() ? kFew : 0) {}

    [[nodiscard]] HWY_INLINE EdgeUnit* begin() { return units_; }

    // Adds behind `next` and returns the new end.
    [[nodiscard]] HWY_INLINE EdgeUnit* add(EdgeUnit* next, int row, int x, int count) {
        if (HWY_UNLIKELY(count > few_)) return addMany(next, row, x, count);
        // Writing two whatever their number spares a branch.
        next[0] = {x, row};
        next[1] = {x + kLanes, row};
        next += count;
        return HWY_UNLIKELY(next > units_ + kMostUnits - kFew) ? draw(next) : next;
    }

    HWY_NOINLINE EdgeUnit* draw(const EdgeUnit* end) {
        drawUnits(units_, end, canvas_);
        return units_;
    }

  private:
    static constexpr int kFew = 2;

    HWY_NOINLINE EdgeUnit* addMany(EdgeUnit* next, int row, int x, int count) {
        const CircleRows& rows = canvas_.rows;
        for (; count > 0; --count, x += kLanes) {
            const int room = rows.clip.right() - x;
            if (room < kLanes) {
                withPart(canvas_.at(x, row), room, [&](std::uint32_t* part) HWY_ATTR {
                    drawUnit({x, row}, part, originOf(rows), rows, canvas_.brush);
                });
                break;
            }
            *next++ = {x, row};
            if (next > units_ + kMostUnits - kFew) next = draw(next);
        }
        return next;
    }

    const Canvas& canvas_;
    const int few_;
    EdgeUnit units_[kMostUnits];
};

HWY_INLINE void drawRun(const Canvas& canvas, std::uint32_t* pixels, int x, int end,
                        const SolidPaint& paint) {
    for (; x + kLanes <= end; x += kLanes) {
        hn::StoreU(paint.over(hn::LoadU(kPixels, pixels + x)), kPixels, pixels + x);
    }
    if (x >= end) return;
    const auto draw = [&](std::uint32_t* at) HWY_ATTR {
        const auto below = hn::LoadU(kPixels, at);
        const auto mask = hn::LoadU(kPixels, kFirstLanes + 8 - (end - x));
        const auto over = hn::BitCast(kPixels, paint.over(below));
        hn::StoreU(hn::IfVecThenElse(mask, over, below), kPixels, at);
    };
    if (HWY_LIKELY(x + kLanes <= canvas.rows.clip.right())) {
        draw(pixels + x);
    } else {
        withPart(pixels + x, end - x, draw);
    }
}

HWY_NOINLINE void drawEdges(const Canvas& canvas) {
    const CircleRows& rows = canvas.rows;
    EdgeList edges(canvas);
    EdgeUnit* next = edges.begin();
    for (int i = 0; i <= rows.runs(); ++i) {
        for (int row = 0; row < rows.count; ++row) {
            next = edges.add(next, row, rows.edgesBegin[i][row], rows.edgesCount[i][row]);
        }
    }
    edges.draw(next);
}

HWY_NOINLINE void drawRuns(const Canvas& shared) {
    const Canvas canvas = shared;  // see drawUnits()
    const CircleRows& rows = canvas.rows;
    const int middle = rows.runs() / 2;
    for (int i = 0; i < rows.runs(); ++i) {
        std::uint32_t* pixels = canvas.firstRow;
        for (int row = 0; row < rows.count; ++row, pixels += canvas.stride) {
            const bool rim = i != middle || rows.middleIsRim[row];
            drawRun(canvas, pixels, rows.runBegin[i][row], rows.runEnd[i][row],
                    rim ? canvas.brush.rim : canvas.brush.inside);
        }
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

HWY_INLINE void drawFlats(const Canvas& canvas) {
    for (int row = 0; row < canvas.rows.count; ++row) {
        if (canvas.rows.flat[row]) drawRow<FlatRow>(canvas, row);
    }
}

HWY_INLINE void drawChords(const Canvas& canvas) {
    for (int row = 0; row < canvas.rows.count; ++row) drawRow<ChordRow>(canvas, row);
}

HWY_NOINLINE void drawCircle(const RenderTarget& target, const PixelRect& clip,
                             const PreparedCircle& circle, const Instance& instance,
                             CircleRows& rows) {
    rows.circle = {instance.x, instance.y, circle.radius * instance.scale,
                   circle.innerRadius * instance.scale};
    rows.clip = clip;
    const Brush brush(circle, std::min(instance.opacity, 1.0F));
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
            drawRuns(canvas);
            drawEdges(canvas);
            drawFlats(canvas);
        }
        rows.firstRow += rows.count;
    }
}

// Asks for the pixels of the next circle while this one is drawn: copies lie anywhere on a screen
// that is larger than the nearer caches.
HWY_INLINE void fetch(const RenderTarget& target, const PixelRect& clip,
                      const PreparedCircle& circle, const Instance& instance) {
    const float radius = std::min(circle.radius * instance.scale, kFetched);
    const auto within = [](float v, int low, int size)
                            HWY_ATTR { return int(std::clamp(v, float(low), float(low + size))); };
    const int left = within(instance.x - radius, clip.x, clip.width - 1);
    const int right = within(instance.x + radius, clip.x, clip.width - 1);
    const int top = within(instance.y - radius, clip.y, clip.height - 1);
    const int bottom = within(instance.y + radius, clip.y, clip.height);
    const std::uint32_t* row = target.pixels + std::ptrdiff_t{top} * target.stride;
    for (int y = top; y <= bottom; ++y, row += target.stride) {
        hwy::Prefetch(row + left);
        hwy::Prefetch(row + right);
    }
}

void drawAll(const RenderTarget& target, const PixelRect& clip, const PreparedCircle& circle,
             std::span<const Instance> instances) {
    CircleRows rows;
    const Instance* waiting = nullptr;  // until the fetching of its pixels has got ahead
    for (const Instance& instance : instances) {
        if (!visible(instance, 2.0 * circle.radius, circle.strongestAlpha)) continue;
        fetch(target, clip, circle, instance);
        if (waiting != nullptr) drawCircle(target, clip, circle, *waiting, rows);
        waiting = &instance;
    }
    if (waiting != nullptr) drawCircle(target, clip, circle, *waiting, rows);
}

}  // namespace
}  // namespace HWY_NAMESPACE
}  // namespace skavlo
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace skavlo {
HWY_EXPORT(drawAll);

void drawCircles(const RenderTarget& target, const PixelRect& clip, const PreparedCircle& circle,
                 std::span<const Instance> instances) {
    const PixelRect area = drawable(target, clip);
    if (area.empty() || !(circle.radius > 0)) return;
    const Bands bands(area, instances, circle.radius);
    for (const Band& band : bands.all()) {
        HWY_DYNAMIC_DISPATCH(drawAll)(target, band.clip, circle, band.instances);
    }
}

}  // namespace skavlo
#endif
