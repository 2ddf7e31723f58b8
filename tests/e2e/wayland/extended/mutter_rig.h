// The overlay on mutter, which has no layer shell: an X window through XWayland.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "tests/e2e/wayland/wayland_rig.h"
#include "tools/rig/display.h"

namespace skavlo {

class Mutter : public WaylandRig {
  protected:
    // With a window of the background's colour and a touchscreen.
    void startMutter();
    // Returns when its window is there.
    void startOverlay();
    // What the overlay's window shows there; 0: nothing.
    [[nodiscard]] std::uint32_t windowPixel(PixelPoint place) const;

    // Of XWayland, once the overlay runs.
    rig::Display& display() { return *display_; }

  private:
    std::string authorityFile_;
    std::string displayName_;
    std::optional<rig::Display> display_;
};

}  // namespace skavlo
