#include "overlay/frame_loop.h"

namespace skavlo {

FrameLoop::FrameLoop(RunLoop& runLoop, const Clock& clock, const Screen& screen)
    : runLoop_(runLoop), clock_(clock), screen_(screen) {}

void FrameLoop::attach(MarkerScene& scene, Window& window) {
    scene_ = &scene;
    window_ = &window;
    window.setFrameHandlers({.ready = [this] { displayIfNeeded(); },
                             .refresh = [this] { refresh(); },
                             .invalidated = [this] { setNeedsDisplay(); }});
    setNeedsDisplay();
}

void FrameLoop::setNeedsDisplay() {
    needsDisplay_ = true;
    if (displayPosted_) return;
    displayPosted_ = true;
    runLoop_.async([this, alive = std::weak_ptr(alive_)] {
        if (alive.expired()) return;
        displayPosted_ = false;
        displayIfNeeded();
    });
}

void FrameLoop::displayIfNeeded() {
    if (!needsDisplay_ || !window_) return;
    // No refresh comes while there is no output, however long and whatever is touched.
    if (!window_->readyForFrame()) return scene_->expire(presentationTime());
    const Frame frame = window_->beginFrame();
    if (!frame.pixels) return;
    needsDisplay_ = false;
    if (!refreshRequested_) animationTime_ = presentationTime();
    const auto damage = painter_.paint(*scene_, frame, screen_.scale(), animationTime_);
    // Before the frame, for a window server that takes both in one go.
    if (!refreshRequested_ && scene_->animating(animationTime_)) {
        refreshRequested_ = true;
        window_->requestRefresh();
    }
    if (!damage.empty()) window_->commitFrame(damage);
}

void FrameLoop::refresh() {
    refreshRequested_ = false;
    needsDisplay_ = true;
    scene_->expire(presentationTime());
    displayIfNeeded();
}

// Animations are looked at as of then, so that they move evenly.
MachTime FrameLoop::presentationTime() const {
    return window_->presentationTime(clock_.mach_absolute_time());
}

}  // namespace skavlo
