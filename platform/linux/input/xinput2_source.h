#pragma once

#include <cstdint>
#include <optional>
#include <set>
#include <vector>

#include "platform/digitizer/contact_tracker.h"
#include "platform/linux/input/touch_source.h"
#include "platform/linux/input/x_input_connection.h"
#include "platform/time.h"

namespace skavlo {

// The touchscreens of the X server, where their devices cannot be opened. Takes over the
// connection's raw events while it lives; the connection outlives it.
class XInput2Source final : public TouchSource {
  public:
    XInput2Source(XInputConnection& connection, ContactTracker& tracker, const Clock& clock,
                  const OutputLayout& layout);
    ~XInput2Source() override;
    XInput2Source(const XInput2Source&) = delete;
    XInput2Source& operator=(const XInput2Source&) = delete;

    void setLayout(const OutputLayout& layout) override;
    // Ends the contacts of devices that are gone or disabled.
    void devicesChanged();

  private:
    void handle(const XRawEvent& event);
    void finishFrame();

    XInputConnection& connection_;
    ContactTracker& tracker_;
    const Clock& clock_;
    Affine desktopToPoints_;             // from normalised desktop positions
    std::optional<std::uint32_t> time_;  // of the frame that is being collected
    std::vector<ContactKey> inFrame_;
    std::set<std::uint16_t> touched_;  // devices that began a contact
};

}  // namespace skavlo
