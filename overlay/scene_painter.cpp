#include "overlay/scene_painter.h"

#include <algorithm>
#include <cmath>
#include <new>
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
        trail_.reset();
    }
    collect(scene, scale, time);
    Changes changes = this->changes();
    if (scene.heartbeats() != heartbeats_) {
        heartbeats_ = scene.heartbeats();
        const int side = static_cast<int>(std::ceil(scale));
        changes.all.add(PixelRect{0, 0, side, side});
    }
    rects_.clear();
    std::swap(shown_, items_);
    // The display shows the scene already. Such a frame is not committed, so it counts in no age.
    if (changes.all.empty() && frame.age != 0) return rects_;
    updateTrail(changes);
    const TileMask& damage = history_.push(changes.all, frame.age);
    rects_ = damage.rects();
    const RenderTarget target{frame.pixels, frame.stride, frame.size};
    draw({target, damage, Items::markers, trail_.get()});
    TileMask mixed = copiesAboveMarkers();
    mixed.keep(damage);
    if (!mixed.empty()) draw({target, mixed, Items::all});
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
    const PixelRect bounds = std::holds_alternative<PreparedCircle>(style)
                                 ? circleBounds(std::get<PreparedCircle>(style), instance)
                                 : spriteBounds(*std::get<const Sprite*>(style), instance);
    if (bounds.empty()) return;
    items_.push_back({generation, copy, styles_.size() - 1, instance, bounds});
}

// Both lists are sorted by generation and copy, so one walk finds what came, went and changed.
ScenePainter::Changes ScenePainter::changes() const {
    Changes result{TileMask(size_), TileMask(size_), {}};
    const auto changed = [&](const Item& item) {
        result.all.add(item.bounds);
        if (!item.isMarker()) result.copies.add(item.bounds);
    };
    const auto name = [](const Item& item) { return std::tie(item.generation, item.copy); };
    auto before = shown_.begin();
    auto after = items_.begin();
    while (before != shown_.end() || after != items_.end()) {
        if (after == items_.end() || (before != shown_.end() && name(*before) < name(*after))) {
            changed(*before++);
        } else if (before == shown_.end() || name(*after) < name(*before)) {
            const auto index = static_cast<std::size_t>(after - items_.begin());
            if (after->isMarker() || underAnotherCopy(index)) {
                changed(*after);
            } else {
                result.all.add(after->bounds);
                result.copiesOnTop.push_back(index);
            }
            ++after;
        } else {
            if (!sameDrawing(before->instance, after->instance)) {
                changed(*before);
                changed(*after);
            }
            ++before;
            ++after;
        }
    }
    return result;
}

bool ScenePainter::underAnotherCopy(std::size_t copy) const {
    const Item& item = items_[copy];
    return std::any_of(items_.begin() + static_cast<std::ptrdiff_t>(copy), items_.end(),
                       [&](const Item& above) {
                           return above.generation != item.generation && !above.isMarker() &&
                                  intersect(above.bounds, item.bounds);
                       });
}

// Copies that came on top are drawn above what is there, unless it is drawn again anyway.
void ScenePainter::updateTrail(Changes& changes) {
    if (changes.copies.empty() && changes.copiesOnTop.empty()) return;
    if (!trail_) {
        const auto pixels =
            static_cast<std::size_t>(size_.width) * static_cast<std::size_t>(size_.height);
        trail_.reset(static_cast<std::uint32_t*>(std::calloc(pixels, sizeof(std::uint32_t))));
        if (!trail_) throw std::bad_alloc();
    }
    const RenderTarget target{trail_.get(), size_.width, size_};
    for (const std::size_t index : changes.copiesOnTop) {
        const Item& copy = shown_[index];
        if (changes.copies.touchesAny(copy.bounds)) {
            changes.copies.add(copy.bounds);
        } else {
            batch_ = {copy.instance};
            drawBatch(target, {0, 0, size_.width, size_.height}, copy.style);
        }
    }
    if (!changes.copies.empty()) draw({target, changes.copies, Items::copies});
}

// Where a later marker's trail crosses an earlier marker.
TileMask ScenePainter::copiesAboveMarkers() const {
    TileMask result(size_);
    for (auto marker = shown_.begin(); marker != shown_.end(); ++marker) {
        if (!marker->isMarker()) continue;
        for (auto above = marker; above != shown_.end(); ++above) {
            if (!above->isMarker() && intersect(above->bounds, marker->bounds)) {
                result.add(above->bounds);
            }
        }
    }
    return result;
}

// What lies wholly in the tiles is drawn at once, in batches of one style; the rest only within
// rectangles of tiles, for the pixels around them are still right.
void ScenePainter::draw(const Pass& pass) {
    const std::vector<PixelRect> rects = pass.tiles.rects();
    for (const PixelRect& rect : rects) {
        if (pass.ground) {
            skavlo::copy(pass.target, rect, pass.ground);
        } else {
            skavlo::clear(pass.target, rect);
        }
    }
    const PixelRect whole{0, 0, size_.width, size_.height};
    batch_.clear();
    std::size_t style = 0;
    const auto flush = [&](const PixelRect& clip) {
        if (!batch_.empty()) drawBatch(pass.target, clip, style);
        batch_.clear();
    };
    for (const Item& item : shown_) {
        if (pass.items != Items::all && item.isMarker() != (pass.items == Items::markers)) continue;
        if (item.style != style) flush(whole);
        style = item.style;
        if (pass.tiles.coversAll(item.bounds)) {
            batch_.push_back(item.instance);
        } else if (pass.tiles.touchesAny(item.bounds)) {
            flush(whole);
            for (const PixelRect& rect : rects) {
                if (!intersect(rect, item.bounds)) continue;
                batch_.push_back(item.instance);
                flush(rect);
            }
        }
    }
    flush(whole);
}

void ScenePainter::drawBatch(const RenderTarget& target, const PixelRect& clip, std::size_t style) {
    if (const auto* circle = std::get_if<PreparedCircle>(&styles_[style])) {
        drawCircles(target, clip, *circle, batch_);
    } else {
        drawSprites(target, clip, *std::get<const Sprite*>(styles_[style]), batch_);
    }
}

}  // namespace skavlo
