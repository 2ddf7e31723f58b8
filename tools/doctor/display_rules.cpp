#include "tools/doctor/display_rules.h"

#include <charconv>

#include "platform/linux/window_servers/choice.h"

namespace skavlo::doctor {

namespace {

Finding backEnd(const DisplayFacts& facts) {
    const WindowServerKind kind =
        chooseWindowServer(
            {.compositor = facts.wayland, .layerShell = facts.layerShell, .xServer = facts.x})
            .kind;
    if (kind == WindowServerKind::wayland) {
        return {"display",
                Level::ok,
                {"Wayland 会话，标记显示在 layer shell 的 overlay 层",
                 "Wayland session: the markers lie in layer shell's overlay layer"}};
    }
    if (kind == WindowServerKind::x11 && !facts.alpha) {
        return {
            "display",
            Level::fail,
            {"X 服务器没有带透明通道的 visual", "the X server has no visual with an alpha channel"},
            {"让 X 服务器使用 24 位色深", "run the X server with 24 bits of depth"}};
    }
    if (kind == WindowServerKind::x11 && facts.wayland) {
        return {"display",
                Level::ok,
                {"Wayland 会话，标记显示在 XWayland 窗口中",
                 "Wayland session: the markers lie in a window of XWayland"}};
    }
    if (kind == WindowServerKind::x11) {
        return {
            "display",
            Level::ok,
            {"X11 会话，标记显示在 X11 窗口中", "X11 session: the markers lie in an X11 window"}};
    }
    return {"display",
            Level::fail,
            {"找不到可用的显示服务器", "no display server can be used"},
            facts.wayland
                ? Text{"请启用 XWayland（DISPLAY），此合成器不提供 layer shell",
                       "enable XWayland (DISPLAY): this compositor offers no layer shell"}
                : Text{"请在图形会话中运行，或设置 WAYLAND_DISPLAY 或 DISPLAY",
                       "run it in a graphical session, or set WAYLAND_DISPLAY or DISPLAY"}};
}

}  // namespace

Findings judgeDisplay(const DisplayFacts& facts) {
    Findings findings{backEnd(facts)};
    if (!facts.wayland) return findings;
    if (facts.layerShell) {
        findings.push_back(
            {"layers", Level::ok, {"合成器提供 layer shell", "the compositor offers layer shell"}});
    } else {
        findings.push_back({"layers",
                            Level::warn,
                            {"合成器不提供 layer shell", "the compositor offers no layer shell"},
                            {"无需处理，改用 XWayland；锁屏等系统界面上不会显示标记",
                             "nothing: XWayland is used instead; the desktop's own surfaces, as "
                             "the lock screen, may cover the markers"}});
    }
    return findings;
}

std::optional<bool> swallowsTouches(std::string_view version) {
    const std::size_t at = version.find_first_of("0123456789");
    if (at == std::string_view::npos) return std::nullopt;
    int major = 0;
    const char* const end = version.data() + version.size();
    if (std::from_chars(version.data() + at, end, major).ec != std::errc()) return std::nullopt;
    return forgetsInputShapes(version.substr(at));
}

}  // namespace skavlo::doctor
