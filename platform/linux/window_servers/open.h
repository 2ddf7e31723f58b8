#pragma once

#include <memory>

#include "platform/linux/desktop_window_server.h"
#include "platform/linux/loop/asio_run_loop.h"
#include "platform/linux/window_servers/choice.h"
#include "platform/result.h"

namespace skavlo {

struct OpenedWindowServer {
    std::unique_ptr<DesktopWindowServer> server;
    WindowServerKind kind = WindowServerKind::none;
};

// Connects to the window server of this session, as chooseWindowServer() says. An error tells what
// was tried.
Result<OpenedWindowServer> openWindowServer(AsioRunLoop& runLoop);

}  // namespace skavlo
