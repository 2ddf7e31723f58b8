#include "overlay/scene_painter.h"

#include <algorithm>
#include <cmath>
#include <tuple>

namespace skavlo {

namespace {

bool intersect(const PixelRect& a, const PixelRect& b) {
    return a.x < b.right() && b.x < a.right() && a.y < b.bottom() && b.y < a.bottom();
}

bool sameDrawing(const Instance& a, const Instance& b) {
    return a.x == b.x && a.y == b.y && a.scale == b.scale && a.opacity == b.opacity;
}

}  // namespace

std::span<const PixelRect> ScenePainter::paint(const MarkerScene& scene, const Frame& frame,
                                               double scale, MachTime time) {
    if (frame.size != size_) {
        size_ = frame.size;
        history_.reset(size_);
        shown_.clear();
    }
    collect(scene, scale, time);
    TileMask changed(size_);
    noteChanges(changed);
    if (scene.heartbeats() != heartbeats_) {
        heartbeats_ = scene.heartbeats();
        const int side = static_cast<int>(std::ceil(scale));
        changed.add(PixelRect{0, 0, side, side});
    }
    rects_.clear();
    std::swap(shown_, items_);
    // The display shows the scene already. Such a frame is not committed, so it counts in no age.
    if (changed.empty() && frame.age != 0) return rects_;
    const TileMask& damage = history_.push(changed, frame.age);
    rects_ = damage.rects();
    const RenderTarget target{frame.pixels, frame.stride, frame.size};
    for (const PixelRect& rect : rects_) skavlo::clear(target, rect);
    draw(target, damage);
    return rects_;
}

void ScenePainter::collect(const MarkerScene& scene, double scale, MachTime time) {
    items_.clear();
    styles_.clear();
    pixelsPerPoint_ = scale;
    if (scene.hidden()) return;
    for (const Generation& generation : scene.generations()) {
        const Look& look = *generation.look;
        if (const auto* circle = std::get_if<CircleLook>(&look.shape)) {
            styles_.emplace_back(CircleStyle{look.size * scale, circle->borderWidth * scale,
                                             circle->fill, circle->border});
        } else {
            const Sprite* sprite = std::get<PictureLook>(look.shape).sprite.get();
            if (!sprite) continue;
            styles_.emplace_back(sprite);
        }
        std::uint64_t name = generation.expiredCopies;
        for (const TrailCopy& copy : generation.copies) {
            const TrailState state = trailState(copy, generation.trailSeconds, time);
            addItem(generation.id, name++, copy.centre, state.scale, look.opacity * state.opacity);
        }
        if (generation.hasMarker) {
            addItem(generation.id, kMarker, generation.centre, generation.scale.valueAt(time),
                    look.opacity * generation.opacity.valueAt(time));
        }
    }
}

void ScenePainter::addItem(MarkerId generation, std::uint64_t copy, Point centre, double scale,
                           double opacity) {
    const Instance instance{static_cast<float>(centre.x * pixelsPerPoint_),
                            static_cast<float>(centre.y * pixelsPerPoint_),
                            static_cast<float>(scale), static_cast<float>(opacity)};
    const Style& style = styles_.back();
    const PixelRect bounds = std::holds_alternative<CircleStyle>(style)
                                 ? circleBounds(std::get<CircleStyle>(style), instance)
                                 : spriteBounds(*std::get<const Sprite*>(style), instance);
    if (bounds.empty()) return;
    items_.push_back({generation, copy, styles_.size() - 1, instance, bounds});
}

// Both lists are sorted by generation and copy, so one walk finds what came, went and changed.
void ScenePainter::noteChanges(TileMask& changed) const {
    const auto name = [](const Item& item) { return std::tie(item.generation, item.copy); };
    auto before = shown_.begin();
    auto after = items_.begin();
    while (before != shown_.end() || after != items_.end()) {
        if (after == items_.end() || (before != shown_.end() && name(*before) < name(*after))) {
            changed.add((before++)->bounds);
        } else if (before == shown_.end() || name(*after) < name(*before)) {
            changed.add((after++)->bounds);
        } else {
            if (!sameDrawing(before->instance, after->instance)) {
                changed.add(before->bounds);
                changed.add(after->bounds);
            }
            ++before;
            ++after;
        }
    }
}

// What lies wholly in the damage is drawn at once, in batches of one style; the rest only within
// the damaged rectangles, for the pixels around them are still right.
void ScenePainter::draw(const RenderTarget& target, const TileMask& damage) {
    const PixelRect whole{0, 0, size_.width, size_.height};
    batch_.clear();
    std::size_t style = 0;
    const auto flush = [&](const PixelRect& clip) {
        if (!batch_.empty()) drawBatch(target, clip, style);
        batch_.clear();
    };
    for (const Item& item : shown_) {
        if (item.style != style) flush(whole);
        style = item.style;
        if (damage.coversAll(item.bounds)) {
            batch_.push_back(item.instance);
        } else if (damage.touchesAny(item.bounds)) {
            flush(whole);
            for (const PixelRect& rect : rects_) {
                if (!intersect(rect, item.bounds)) continue;
                batch_.push_back(item.instance);
                flush(rect);
            }
        }
    }
    flush(whole);
}

void ScenePainter::drawBatch(const RenderTarget& target, const PixelRect& clip, std::size_t style) {
    if (const auto* circle = std::get_if<CircleStyle>(&styles_[style])) {
        drawCircles(target, clip, *circle, batch_);
    } else {
        drawSprites(target, clip, *std::get<const Sprite*>(styles_[style]), batch_);
    }
}

}  // namespace skavlo
