#include "platform/linux/window_servers/open.h"

#include <cstdlib>
#include <utility>

#include "platform/linux/wayland/wayland_window_server.h"
#include "platform/linux/x11/x11_window_server.h"

namespace skavlo {

Result<OpenedWindowServer> openWindowServer(AsioRunLoop& runLoop) {
    auto wayland = WaylandConnection::open(runLoop);
    const char* display = std::getenv("DISPLAY");
    DesktopFacts facts;
    facts.compositor = static_cast<bool>(wayland);
    facts.layerShell = facts.compositor && WaylandWindowServer::serves(**wayland);
    facts.xServer = display && *display;
    const WindowServerChoice choice = chooseWindowServer(facts);
    OpenedWindowServer result;
    result.kind = choice.kind;
    if (choice.kind == WindowServerKind::wayland) {
        result.server = std::make_unique<WaylandWindowServer>(runLoop, std::move(*wayland));
        return result;
    }
    if (choice.kind == WindowServerKind::none) return Error{choice.reason};
    auto x11 = X11WindowServer::connect(runLoop, facts.compositor);
    if (!x11) return Error{std::string(choice.reason) + ", and " + x11.error().message};
    result.server = std::move(*x11);
    return result;
}

}  // namespace skavlo
