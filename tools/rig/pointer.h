// A mouse and a keyboard that a person could have worked, through the X server's test extension.
#pragma once

#include <vector>

#include "platform/geometry.h"
#include "tools/rig/display.h"

namespace skavlo::rig {

inline constexpr std::uint8_t kWheelUp = 4;
inline constexpr std::uint8_t kWheelDown = 5;

// Places are pixels of the root window. Each call returns once the server has carried it out;
// false: the connection broke.
class Pointer {
  public:
    // The display outlives it.
    explicit Pointer(const Display& display) : display_(display) {}

    bool moveTo(PixelPoint place);
    bool press(std::uint8_t button = XCB_BUTTON_INDEX_1);
    bool release(std::uint8_t button = XCB_BUTTON_INDEX_1);
    bool click(PixelPoint place);
    // Pressed at the first place, moved through the others, released at the last.
    bool drag(const std::vector<PixelPoint>& places);
    // Gives the keyboard to the window at this place, which is a window manager's part elsewhere.
    bool focusWindowAt(PixelPoint place);
    // With the key code of this symbol in the server's own table; false also: no key has it.
    bool type(std::uint32_t keysym);

  private:
    bool fake(std::uint8_t type, std::uint8_t detail, PixelPoint place = {});

    const Display& display_;
};

}  // namespace skavlo::rig
