#pragma once

#include <functional>
#include <memory>
#include <vector>

namespace skavlo {

// An on/off switch that can show activity inside its thumb. Whoever draws it listens to
// didChange; clients add targets, which only a user's tap calls.
class SKVFakeSwitch : public std::enable_shared_from_this<SKVFakeSwitch> {
  public:
    using Target = std::function<void(SKVFakeSwitch& sender)>;

    explicit SKVFakeSwitch(int itsTag = 0) : tag(itsTag) {}

    [[nodiscard]] bool isOn() const { return on_; }
    // Sends no event. Animated: the thumb glides for a quarter of a second.
    void setOn(bool on, bool animated = false);
    // While loading the thumb shows a spinner and taps are ignored; the value is untouched.
    void setLoading(bool loading);
    [[nodiscard]] bool isLoading() const { return loading_; }
    [[nodiscard]] bool userInteractionEnabled() const { return !loading_; }
    // The user's tap: flips the value, animated, then calls the targets of value-changed.
    void touchUpInside();
    void addTarget(Target valueChanged);

    int tag;
    // Set by the view: called after each change of value or loading state.
    std::function<void(bool animated)> didChange;

  private:
    bool on_ = false;
    bool loading_ = false;
    std::vector<Target> targets_;
};

}  // namespace skavlo
