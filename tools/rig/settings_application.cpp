#include "tools/rig/settings_application.h"

#include <algorithm>

namespace skavlo::rig {

namespace {

constexpr std::chrono::seconds kStartTime(20);
constexpr std::chrono::milliseconds kBetweenLooks(10);
constexpr std::chrono::milliseconds kLongestRest(250);  // between two steps of a movement
constexpr int kBarHeight = 60;   // what lies closer to an end of the window may be covered
constexpr double kThumb = 28.0;  // points; the thumb's middle cannot come closer to the ends

}  // namespace

Result<SettingsApplication> SettingsApplication::start(const XServer& server,
                                                       const Display& display,
                                                       const std::string& executable,
                                                       const std::vector<std::string>& more) {
    auto environment = server.environment();
    environment.emplace_back("WAYLAND_DISPLAY");
    auto bus = SessionBus::start(environment);
    if (!bus) {
        return bus.error();
    }
    bus->enterEnvironment();
    environment.push_back(bus->environment());
    environment.emplace_back("QT_LINUX_ACCESSIBILITY_ALWAYS_ON=1");
    environment.insert(environment.end(), more.begin(), more.end());
    auto process = Child::start({{executable}, environment, {}, -1});
    if (!process) {
        return process.error();
    }
    const Deadline deadline(kStartTime);
    auto tree = AccessibleTree::open("skavlo", deadline);
    if (!tree) {
        return tree.error();
    }
    SettingsApplication result(std::move(*bus), std::move(*process), std::move(*tree), display);
    // Behind the splash nothing can be clicked.
    while (!deadline.passed()) {
        const auto splash = result.tree_.find("animation", "Skavlo");
        if (splash && !splash->showing) {
            return result;
        }
        waitReadable({}, Deadline(kBetweenLooks));
    }
    return Error{"the settings application's splash does not end"};
}

std::optional<AccessibleItem> SettingsApplication::waitFor(const std::string& role,
                                                           const std::string& name,
                                                           const Deadline& deadline) const {
    while (!deadline.passed()) {
        auto found = tree_.find(role, name);
        if (found && !found->extents.empty()) {
            return found;
        }
        waitReadable({}, Deadline(kBetweenLooks));
    }
    return std::nullopt;
}

std::optional<AccessibleItem> SettingsApplication::waitForMove(const std::string& role,
                                                               const std::string& name,
                                                               const AccessibleItem& from) const {
    const Deadline deadline(kLongestRest);
    while (!deadline.passed()) {
        auto found = tree_.find(role, name);
        if (found && found->extents != from.extents) {
            return found;
        }
        waitReadable({}, Deadline(kBetweenLooks));
    }
    return std::nullopt;
}

std::optional<AccessibleItem> SettingsApplication::scrollTo(const std::string& role,
                                                            const std::string& name,
                                                            const Deadline& deadline) {
    auto found = waitFor(role, name, deadline);
    while (found && !deadline.passed()) {
        const int y = found->center().y;
        const bool clear = y > 2 * kBarHeight && y < screen_.height - 2 * kBarHeight;
        if (!clear) {
            pointer_.moveTo({screen_.width / 8, screen_.height / 2});
            const std::uint8_t wheel = y <= 2 * kBarHeight ? kWheelUp : kWheelDown;
            pointer_.press(wheel);
            pointer_.release(wheel);
        }
        // It may still be gliding; and what is at an end cannot be scrolled any further.
        const auto moved = waitForMove(role, name, *found);
        if (!moved) {
            return found;
        }
        found = moved;
    }
    return std::nullopt;
}

bool SettingsApplication::click(const std::string& role, const std::string& name,
                                const Deadline& deadline) {
    const auto found = scrollTo(role, name, deadline);
    return found && pointer_.click(found->center());
}

bool SettingsApplication::dragSlider(const std::string& name, double share,
                                     const Deadline& deadline) {
    const auto found = scrollTo(kSliderRole, name, deadline);
    if (!found || !found->value) {
        return false;
    }
    constexpr int kSteps = 20;
    const double track = found->extents.width - kThumb;
    const auto placeOf = [&](double part) {
        return PixelPoint{found->extents.x + static_cast<int>(kThumb / 2 + track * part),
                          found->center().y};
    };
    const double from = (*found->value - found->minimum) / (found->maximum - found->minimum);
    std::vector<PixelPoint> places;
    for (int step = 0; step <= kSteps; ++step) {
        places.push_back(placeOf(from + (share - from) * step / kSteps));
    }
    return pointer_.drag(places);
}

}  // namespace skavlo::rig
