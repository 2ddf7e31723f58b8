#include "platform/linux/capture/capture_monitor.h"

#include <algorithm>
#include <utility>

namespace skavlo {

void CaptureMonitor::add(std::unique_ptr<CaptureSource> source) {
    source->setChangeHandler([this] { update(); });
    sources_.push_back(std::move(source));
    update();
}

void CaptureMonitor::setDidChangeHandler(std::function<void()> handler) {
    didChange_ = std::move(handler);
}

void CaptureMonitor::update() {
    const bool captured = std::any_of(sources_.begin(), sources_.end(),
                                      [](const auto& source) { return source->captures(); });
    if (std::exchange(captured_, captured) != captured && didChange_) didChange_();
}

}  // namespace skavlo
