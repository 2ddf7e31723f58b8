#include "platform/linux/input/pointer_source.h"

#include <memory>

#include "platform/linux/input/server_time.h"

namespace skavlo {

namespace {
constexpr std::uint32_t kButtons =
    XCB_INPUT_XI_EVENT_MASK_RAW_BUTTON_PRESS | XCB_INPUT_XI_EVENT_MASK_RAW_BUTTON_RELEASE;
constexpr std::uint32_t kButtonsAndMotion = kButtons | XCB_INPUT_XI_EVENT_MASK_RAW_MOTION;
}  // namespace

PointerSource::PointerSource(XInputConnection& connection, ContactTracker& tracker,
                             const Clock& clock, const OutputLayout& layout)
    : connection_(connection), tracker_(tracker), clock_(clock) {
    setLayout(layout);
    connection_.setRawHandler([this](const XRawEvent& event) { handle(event); });
    connection_.selectRaw(kButtons);
}

PointerSource::~PointerSource() {
    connection_.selectRaw(0);
    connection_.setRawHandler({});
}

void PointerSource::setLayout(const OutputLayout& layout) {
    desktopToPoints_ = desktopPixelsToPoints(layout);
    if (held_) ask();
}

void PointerSource::devicesChanged() {
    if (held_) ask();
}

void PointerSource::handle(const XRawEvent& event) {
    switch (event.type) {
        case XCB_INPUT_RAW_BUTTON_PRESS:
            if (!connection_.isPrimaryButton(event.detail) || held_) return;
            time_ = event.time;
            press(event.device);
            break;
        case XCB_INPUT_RAW_BUTTON_RELEASE:
            if (!connection_.isPrimaryButton(event.detail) || held_ != event.device) return;
            time_ = event.time;
            release();
            break;
        case XCB_INPUT_RAW_MOTION:
            if (held_ != event.device) return;
            time_ = event.time;
            ask();
            break;
        default:
            break;
    }
}

// Raw events say which button, but not where the pointer is.
void PointerSource::press(std::uint16_t master) {
    held_ = master;
    lifting_ = false;
    shown_ = false;
    ++presses_;
    connection_.selectRaw(kButtonsAndMotion);
    ask();
}

void PointerSource::release() {
    if (shown_)
        end();
    else
        lifting_ = true;  // a click is shown as soon as its place is known
}

// One question at a time: a fast mouse does not fill the connection.
void PointerSource::ask() {
    if (asking_) {
        outdated_ = true;
        return;
    }
    asking_ = true;
    outdated_ = false;
    connection_.queryPointer(*held_, [this, alive = std::weak_ptr(alive_),
                                      press = presses_](const std::optional<XPointer>& pointer) {
        if (!alive.expired()) answer(pointer, press);
    });
}

void PointerSource::answer(const std::optional<XPointer>& pointer, unsigned press) {
    asking_ = false;
    if (!held_) return;
    if (press != presses_) {  // it speaks of the time before this press
        ask();
        return;
    }
    if (!pointer) {
        end();
        return;
    }
    shown_ = true;
    tracker_.motion({*held_, 0}, desktopToPoints_.apply(pointer->desktopPixels));
    if (lifting_ || !pointer->primaryHeld) {
        end();
        return;
    }
    tracker_.frame(serverTimeToMachTime(time_, clock_.mach_absolute_time()));
    if (outdated_) ask();
}

void PointerSource::end() {
    tracker_.up({*held_, 0});
    held_.reset();
    lifting_ = false;
    connection_.selectRaw(kButtons);
    tracker_.frame(serverTimeToMachTime(time_, clock_.mach_absolute_time()));
}

}  // namespace skavlo
