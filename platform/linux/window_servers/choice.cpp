#include "platform/linux/window_servers/choice.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <optional>
#include <utility>

namespace skavlo {

namespace {

// The first row whose conditions hold; a condition left out holds always.
struct Row {
    std::optional<bool> compositor;
    std::optional<bool> layerShell;
    std::optional<bool> xServer;
    WindowServerChoice choice;
};

constexpr std::array kRows{
    Row{true, true, {}, {WindowServerKind::wayland, "the compositor offers layer shell"}},
    Row{true, false, true, {WindowServerKind::x11, "the compositor offers no layer shell"}},
    Row{false, {}, true, {WindowServerKind::x11, "no Wayland compositor answers"}},
    Row{true,
        false,
        false,
        {WindowServerKind::none, "the compositor offers no layer shell, and there is no X server"}},
    Row{{},
        {},
        {},
        {WindowServerKind::none, "neither a compositor nor an X server can be reached"}},
};

bool fits(std::optional<bool> condition, bool fact) {
    return !condition || *condition == fact;
}

// Leading number; none: there is none, as in "alpha".
std::optional<int> number(std::string_view text) {
    int value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    return error == std::errc() ? std::optional(value) : std::nullopt;
}

}  // namespace

WindowServerChoice chooseWindowServer(const DesktopFacts& facts) {
    return std::find_if(kRows.begin(), kRows.end(),
                        [&](const Row& row) {
                            return fits(row.compositor, facts.compositor) &&
                                   fits(row.layerShell, facts.layerShell) &&
                                   fits(row.xServer, facts.xServer);
                        })
        ->choice;
}

bool forgetsInputShapes(std::string_view mutterVersion) {
    constexpr std::pair kFirstWithout{44, 2};
    if (mutterVersion.empty()) return false;
    const std::size_t dot = mutterVersion.find('.');
    const int major = number(mutterVersion.substr(0, dot)).value_or(0);
    // "44.rc" comes before "44.0".
    const int minor =
        dot == std::string_view::npos ? 0 : number(mutterVersion.substr(dot + 1)).value_or(-1);
    return std::pair(major, minor) < kFirstWithout;
}

}  // namespace skavlo
