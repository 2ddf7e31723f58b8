// Finding the overlay's window among those of a screen.
#pragma once

#include <optional>

#include "tools/rig/child.h"
#include "tools/rig/display.h"

namespace skavlo::rig {

// The mapped override-redirect 32-bit window of class "skavlo" that covers the whole root window;
// none: there is none.
std::optional<xcb_window_t> findOverlayWindow(const Display& display);

// Waits until it is there. None: the deadline passed or one of the descriptors became readable
// first.
std::optional<xcb_window_t> waitForOverlayWindow(const Display& display, const Deadline& deadline,
                                                 const std::vector<int>& interruptions);

}  // namespace skavlo::rig
