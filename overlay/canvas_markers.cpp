// What each touch does to the markers.
#include <algorithm>
#include <cmath>

#include "overlay/touch_canvas_view_controller.h"

namespace skavlo {

namespace {
constexpr double kTrailSpacingSquared = 64.0;  // 8 points
constexpr double kSmallestLiftScale = 0.01;
constexpr double kLiftAllScale = 1.5;
}  // namespace

TouchCanvasViewController::ModeBehaviour TouchCanvasViewController::behaviour() const {
    switch (skv_displayMode) {
        case DisplayMode::color:
            return {skv_colorTracking, skv_colorAnimDuration, skv_colorLiftScale,
                    skv_colorAnimDuration};
        case DisplayMode::image:
            return {skv_imageTracking, skv_imageAnimDuration, skv_imageLiftScale,
                    skv_imageAnimDuration};
        case DisplayMode::emoji:
            return {skv_emojiTracking, skv_emojiAnimDuration, skv_emojiLiftScale,
                    skv_emojiAnimDuration};
    }
    return {false, 0, skv_emojiLiftScale, skv_emojiAnimDuration};
}

double TouchCanvasViewController::skv_currentAnimDuration() const {
    return behaviour().animSeconds;
}

void TouchCanvasViewController::skv_handleTouch(FingerId id, Point atPoint) {
    if (skv_isSuppressed) return;
    if (skv_singleFingerMode) {
        if (skv_activeSingleFingerId == kNoFinger) skv_activeSingleFingerId = id;
        if (skv_activeSingleFingerId != id) return;
    }
    const auto marker = skv_markerViews.find(id);
    if (marker == skv_markerViews.end()) {
        skv_markerViews[id] = skv_containerView.addMarker(currentLook(), atPoint,
                                                          services_.clock.mach_absolute_time());
    } else {
        skv_containerView.moveMarker(marker->second, atPoint);
    }
    if (behaviour().leavesTrail) dropTrailCopyIfDue(id, atPoint);
}

void TouchCanvasViewController::dropTrailCopyIfDue(FingerId id, Point point) {
    const auto anchor = skv_trailAnchors.find(id);
    if (anchor != skv_trailAnchors.end()) {
        const double dx = point.x - anchor->second.x;
        const double dy = point.y - anchor->second.y;
        if (dx * dx + dy * dy < kTrailSpacingSquared) return;
    }
    skv_trailAnchors[id] = point;
    skv_containerView.dropTrailCopy(skv_markerViews[id], point, behaviour().trailSeconds,
                                    services_.clock.mach_absolute_time());
}

void TouchCanvasViewController::skv_liftTouch(FingerId id) {
    if (skv_singleFingerMode && skv_activeSingleFingerId == id) {
        skv_activeSingleFingerId = kNoFinger;
    }
    const auto marker = skv_markerViews.find(id);
    if (marker == skv_markerViews.end()) return;
    const double liftScale = behaviour().liftScale;
    // Not std::max: a scale that is no number stays so.
    const double scale = liftScale < kSmallestLiftScale ? kSmallestLiftScale : liftScale;
    skv_containerView.liftMarker(marker->second, scale, skv_currentAnimDuration(),
                                 services_.clock.mach_absolute_time());
    skv_markerViews.erase(marker);
    skv_trailAnchors.erase(id);
}

void TouchCanvasViewController::skv_liftAllTouches() {
    const MachTime now = services_.clock.mach_absolute_time();
    for (const auto& [id, marker] : skv_markerViews) {
        skv_containerView.liftMarker(marker, kLiftAllScale, skv_currentAnimDuration(), now);
    }
    skv_markerViews.clear();
    skv_trailAnchors.clear();
    skv_activeSingleFingerId = kNoFinger;
}

}  // namespace skavlo
