// A full-screen window of an X server that takes touches.
#pragma once

#include <xcb/xinput.h>

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "tests/e2e/overlay/window_touch.h"
#include "tools/rig/display.h"

namespace skavlo::test {

class XTouchWindow {
  public:
    // Mapped on return, on a connection of its own. `colour`: 0xffRRGGBB.
    XTouchWindow(rig::Display display, std::uint32_t colour);

    // What reached the window so far.
    [[nodiscard]] const std::vector<WindowTouch>& touches() const { return touches_; }
    // Whether the server has an input device of this name that is switched on.
    [[nodiscard]] bool deviceEnabled(const std::string& name) const;
    // Reads events until the condition holds; false: it does not at the deadline, or the
    // connection broke.
    bool waitUntil(const std::function<bool()>& condition, const rig::Deadline& deadline);

  private:
    void select(xcb_window_t window, xcb_input_device_id_t device, std::uint32_t events) const;
    void note(const xcb_generic_event_t& event);

    rig::Display display_;
    std::vector<WindowTouch> touches_;
};

}  // namespace skavlo::test
