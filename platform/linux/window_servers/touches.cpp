#include "platform/linux/window_servers/touches.h"

#include <string>
#include <utility>

#include "platform/linux/x11/connect_to_x.h"

namespace skavlo {

std::unique_ptr<InputSelector> touchesOf(AsioRunLoop& runLoop, DesktopWindowServer& server,
                                         WindowServerKind kind) {
    InputOptions options;
    options.layout = [&server] { return server.layout(); };
    // A Wayland compositor tells nobody of touches on other people's windows.
    if (kind == WindowServerKind::x11) {
        options.connectX = [] { return connectToX(nullptr); };
    }
    auto touches = std::make_unique<InputSelector>(runLoop.context(), std::move(options));
    touches->setTouchOutputHandler(
        [&server](const std::string& output) { server.setTouchOutput(output); });
    server.addLayoutHandler([selector = touches.get()] { selector->layoutChanged(); });
    return touches;
}

}  // namespace skavlo
