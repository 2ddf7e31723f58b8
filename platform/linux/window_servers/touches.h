#pragma once

#include <memory>

#include "platform/linux/input/input_selector.h"
#include "platform/linux/loop/asio_run_loop.h"
#include "platform/linux/window_servers/open.h"

namespace skavlo {

// The session's touches, in points of the window server's main output, which in turn becomes the
// one that the touchscreen is mapped to once they are scheduled. `kind`: of the server, which
// outlives them and changes nothing after their end.
std::unique_ptr<InputSelector> touchesOf(AsioRunLoop& runLoop, DesktopWindowServer& server,
                                         WindowServerKind kind);

}  // namespace skavlo
