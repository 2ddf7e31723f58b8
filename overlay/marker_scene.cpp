#include "overlay/marker_scene.h"

#include <algorithm>
#include <utility>

namespace skavlo {

namespace {
constexpr double kPopInScale = 0.5;
constexpr double kPopInSeconds = 0.1;
constexpr double kTrailEndScale = 0.01;
}  // namespace

MarkerScene::MarkerScene(std::function<void()> needsDisplay)
    : needsDisplay_(std::move(needsDisplay)) {}

Generation* MarkerScene::find(MarkerId id) {
    const auto it =
        std::lower_bound(generations_.begin(), generations_.end(), id,
                         [](const Generation& g, MarkerId wanted) { return g.id < wanted; });
    return it != generations_.end() && it->id == id && it->hasMarker ? &*it : nullptr;
}

MarkerId MarkerScene::addMarker(std::shared_ptr<const Look> look, Point centre, MachTime now) {
    Generation& generation = generations_.emplace_back();
    generation.id = ++lastId_;
    generation.look = std::move(look);
    generation.centre = centre;
    generation.scale = {now, kPopInSeconds, Curve::easeInOut, kPopInScale, 1};
    needsDisplay_();
    return generation.id;
}

void MarkerScene::moveMarker(MarkerId id, Point centre) {
    Generation* generation = find(id);
    if (!generation || generation->centre == centre) return;
    generation->centre = centre;
    needsDisplay_();
}

void MarkerScene::dropTrailCopy(MarkerId id, Point centre, double seconds, MachTime now) {
    Generation* generation = find(id);
    if (!generation) return;
    generation->trailSeconds = seconds;
    generation->copies.push_back({centre, now});
    needsDisplay_();
}

void MarkerScene::liftMarker(MarkerId id, double scale, double seconds, MachTime now) {
    Generation* generation = find(id);
    if (!generation) return;
    generation->lifting = true;
    generation->scale = {now, seconds, Curve::easeInOut, generation->scale.valueAt(now), scale};
    generation->opacity = {now, seconds, Curve::easeInOut, generation->opacity.valueAt(now), 0};
    needsDisplay_();
}

void MarkerScene::clear() {
    if (generations_.empty()) return;
    generations_.clear();
    needsDisplay_();
}

void MarkerScene::setHidden(bool hidden) {
    if (hidden_ == hidden) return;
    hidden_ = hidden;
    needsDisplay_();
}

void MarkerScene::touchHeartbeat() {
    ++heartbeats_;
    needsDisplay_();
}

void MarkerScene::expire(MachTime now) {
    for (Generation& generation : generations_) {
        auto& copies = generation.copies;
        while (!copies.empty() &&
               elapsedFraction(copies.front().born, generation.trailSeconds, now) >= 1) {
            copies.pop_front();
            ++generation.expiredCopies;
        }
        if (generation.lifting && generation.opacity.finishedAt(now)) generation.hasMarker = false;
    }
    std::erase_if(generations_,
                  [](const Generation& g) { return !g.hasMarker && g.copies.empty(); });
}

bool MarkerScene::animating(MachTime now) const {
    if (hidden_) return false;
    return std::any_of(generations_.begin(), generations_.end(), [&](const Generation& g) {
        return !g.copies.empty() || (g.hasMarker && (g.lifting || !g.scale.finishedAt(now)));
    });
}

TrailState trailState(const TrailCopy& copy, double seconds, MachTime now) {
    const double progress = curveProgress(Curve::easeOut, elapsedFraction(copy.born, seconds, now));
    return {1 + (kTrailEndScale - 1) * progress, 1 - progress};
}

}  // namespace skavlo
