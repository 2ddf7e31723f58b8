// Which window server the overlay uses, and what that one needs of it. Pure tables.
#pragma once

#include <string_view>

namespace skavlo {

enum class WindowServerKind { none, wayland, x11 };

// What can be reached.
struct DesktopFacts {
    bool compositor = false;  // a Wayland compositor answers
    bool layerShell = false;  // and offers layer shell
    bool xServer = false;     // DISPLAY names an X server, XWayland or a real one
};

struct WindowServerChoice {
    WindowServerKind kind;
    const char* reason;
};
WindowServerChoice chooseWindowServer(const DesktopFacts& facts);

// Whether XWayland's windows get all touches after each frame that they draw, whatever their input
// shape says, until the shape changes. `mutterVersion`: of the window manager, as "43.8"; empty:
// it is another one. Mutter does so before its version 44.2.
bool forgetsInputShapes(std::string_view mutterVersion);

}  // namespace skavlo
