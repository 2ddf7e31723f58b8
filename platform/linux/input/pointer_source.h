#pragma once

#include <cstdint>
#include <memory>
#include <optional>

#include "platform/digitizer/contact_tracker.h"
#include "platform/linux/input/touch_source.h"
#include "platform/linux/input/x_input_connection.h"
#include "platform/time.h"

namespace skavlo {

// The X pointer as a finger that touches while button 1 is held. Motion is selected only then: an
// idle mouse wakes nobody. Takes over the connection's raw events while it lives; the connection
// outlives it.
class PointerSource final : public TouchSource {
  public:
    PointerSource(XInputConnection& connection, ContactTracker& tracker, const Clock& clock,
                  const OutputLayout& layout);
    ~PointerSource() override;
    PointerSource(const PointerSource&) = delete;
    PointerSource& operator=(const PointerSource&) = delete;

    void setLayout(const OutputLayout& layout) override;
    // The device whose button is held may be gone without a release.
    void devicesChanged();

  private:
    void handle(const XRawEvent& event);
    void press(std::uint16_t master);
    void release();
    void ask();
    void answer(const std::optional<XPointer>& pointer, unsigned press);
    void end();

    XInputConnection& connection_;
    ContactTracker& tracker_;
    const Clock& clock_;
    Affine desktopToPoints_;             // from desktop pixels
    std::optional<std::uint16_t> held_;  // the master pointer that touches
    std::uint32_t time_ = 0;             // server milliseconds of its last event
    unsigned presses_ = 0;
    bool asking_ = false;    // a question is on its way
    bool outdated_ = false;  // the pointer moved since it was asked
    bool lifting_ = false;   // released before the first answer
    bool shown_ = false;
    std::shared_ptr<const bool> alive_ = std::make_shared<const bool>(true);
};

}  // namespace skavlo
