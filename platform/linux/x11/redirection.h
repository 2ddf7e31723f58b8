#pragma once

#include "platform/linux/x11/x11_connection.h"

namespace skavlo {

// XWayland hands its compositor no window that was mapped before that one redirected the screen's
// windows, however long it is there. A server that was started for its first client, or has only
// just been started, takes that client a moment earlier. Returns once windows are redirected, or
// after two seconds: then by nobody.
void waitForRedirection(const X11Connection& connection);

}  // namespace skavlo
