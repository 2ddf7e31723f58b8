#include <xcb/xcb.h>

#include <array>
#include <cstdio>
#include <memory>
#include <utility>

#include "platform/linux/input/mapping.h"
#include "tools/doctor/checks.h"
#include "tools/doctor/display_rules.h"
#include "tools/doctor/overlay_view.h"
#include "tools/doctor/wayland_probe.h"

namespace skavlo::doctor {

namespace {

struct Disconnect {
    void operator()(xcb_connection_t* connection) const { xcb_disconnect(connection); }
};

bool hasAlpha(const xcb_screen_t& screen) {
    constexpr std::uint8_t kDepthWithAlpha = 32;
    for (auto depths = xcb_screen_allowed_depths_iterator(&screen); depths.rem > 0;
         xcb_depth_next(&depths)) {
        if (depths.data->depth == kDepthWithAlpha && xcb_depth_visuals_length(depths.data) > 0)
            return true;
    }
    return false;
}

void probeX(DisplayFacts& facts) {
    int number = 0;
    const std::unique_ptr<xcb_connection_t, Disconnect> connection(xcb_connect(nullptr, &number));
    if (xcb_connection_has_error(connection.get()) != 0) return;
    facts.x = true;
    auto screens = xcb_setup_roots_iterator(xcb_get_setup(connection.get()));
    for (; number > 0 && screens.rem > 1; --number) xcb_screen_next(&screens);
    facts.alpha = hasAlpha(*screens.data);
}

// The first line of what the command prints.
std::string firstLine(const char* command) {
    const std::unique_ptr<FILE, int (*)(FILE*)> pipe(popen(command, "re"), &pclose);
    std::array<char, 256> line{};
    if (!pipe || !std::fgets(line.data(), line.size(), pipe.get())) return {};
    return line.data();
}

// Built-in commands only: what a process calls itself is no reason to run it.
std::string versionOf(const std::string& program) {
    if (program == "gnome-shell") return firstLine("/usr/bin/gnome-shell --version 2>/dev/null");
    if (program == "mutter") return firstLine("/usr/bin/mutter --version 2>/dev/null");
    return {};
}

Finding quirks(const std::string& program) {
    const auto swallows = swallowsTouches(versionOf(program));
    if (!swallows.value_or(false)) {
        return {"quirks",
                Level::ok,
                {"合成器 " + program + " 没有需要绕过的已知问题",
                 "the compositor " + program + " has no known trouble to be worked around"}};
    }
    return {"quirks",
            Level::warn,
            {"44.2 之前的 mutter 会让 XWayland 窗口截取触摸，Skavlo 会自动绕过",
             "mutter before 44.2 lets windows of XWayland take touches; Skavlo works around it"},
            {"若触摸失灵，请升级到 mutter 44.2", "upgrade to mutter 44.2 if touches get lost"}};
}

}  // namespace

Findings judgeOutput(const OutputLayout& layout) {
    const OutputInfo* output = mainOutput(layout);
    if (!output || output->name.empty()) return {};
    return {{"output",
             Level::ok,
             {"标记显示在输出 " + output->name + " 上",
              "the markers lie on the output " + output->name}}};
}

Findings checkDisplay(const Surroundings& surroundings) {
    DisplayFacts facts;
    const auto wayland = probeWayland();
    if (wayland) {
        facts.wayland = true;
        facts.layerShell = wayland->interfaces.contains("zwlr_layer_shell_v1");
    }
    if (!surroundings.value("DISPLAY").empty()) probeX(facts);
    Findings findings = judgeDisplay(facts);
    if (wayland && !wayland->program.empty()) findings.push_back(quirks(wayland->program));
    if (const auto view = overlayView(surroundings)) {
        for (Finding& finding : judgeOutput(view->layout)) findings.push_back(std::move(finding));
    }
    return findings;
}

}  // namespace skavlo::doctor
