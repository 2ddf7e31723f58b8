#include "ui/skv_fake_switch.h"

#include <utility>

namespace skavlo {

void SKVFakeSwitch::setOn(bool on, bool animated) {
    on_ = on;
    if (didChange) didChange(animated);
}

void SKVFakeSwitch::setLoading(bool loading) {
    loading_ = loading;
    if (didChange) didChange(false);
}

void SKVFakeSwitch::touchUpInside() {
    if (!userInteractionEnabled()) return;
    setOn(!on_, true);
    const auto targets = targets_;  // one of them may add more
    for (const Target& target : targets) target(*this);
}

void SKVFakeSwitch::addTarget(Target valueChanged) {
    targets_.push_back(std::move(valueChanged));
}

}  // namespace skavlo
