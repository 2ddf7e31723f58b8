#pragma once

#include <sys/types.h>
#include <xcb/xcb.h>

#include <optional>
#include <string>

namespace skavlo {

// To the server that DISPLAY names, as xcb_connect() does. A server without an authority file, as
// the XWayland of some compositors, lets nobody in but the user who started it, not even root: then
// root connects under the effective user id of the session's owner, which it has during the call
// only. The result may be in error, as that of xcb_connect().
xcb_connection_t* connectToX(int* screenNumber);

// Who owns the session: the owner of XDG_RUNTIME_DIR. None: it is not there, or it is root. Never
// the owner of the display's socket: a name in DISPLAY could lead root onto somebody else's screen.
std::optional<uid_t> sessionOwner(const char* runtimeDirectory);

}  // namespace skavlo
