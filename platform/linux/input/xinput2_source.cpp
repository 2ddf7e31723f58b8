#include "platform/linux/input/xinput2_source.h"

#include <algorithm>

#include "platform/linux/input/server_time.h"

namespace skavlo {

XInput2Source::XInput2Source(XInputConnection& connection, ContactTracker& tracker,
                             const Clock& clock, const OutputLayout& layout)
    : connection_(connection), tracker_(tracker), clock_(clock) {
    setLayout(layout);
    connection_.setRawHandler([this](const XRawEvent& event) { handle(event); });
    connection_.setDrainedHandler([this] { finishFrame(); });
    connection_.selectRaw(XCB_INPUT_XI_EVENT_MASK_RAW_TOUCH_BEGIN |
                          XCB_INPUT_XI_EVENT_MASK_RAW_TOUCH_UPDATE |
                          XCB_INPUT_XI_EVENT_MASK_RAW_TOUCH_END);
}

XInput2Source::~XInput2Source() {
    connection_.selectRaw(0);
    connection_.setRawHandler({});
    connection_.setDrainedHandler({});
}

void XInput2Source::setLayout(const OutputLayout& layout) {
    // Raw values are behind the device's coordinate transformation already: they lie on the
    // desktop.
    const Affine toPoints = deviceToPoints(layout, {.desktopTransform = Affine{}});
    if (toPoints == desktopToPoints_) return;
    desktopToPoints_ = toPoints;
    // Fingers that rest say nothing of where they lie now; one that moves begins anew.
    for (const std::uint16_t id : touched_) tracker_.endDevice(id, clock_.mach_absolute_time());
}

void XInput2Source::devicesChanged() {
    std::erase_if(touched_, [&](std::uint16_t id) {
        const XInputDevice* device = connection_.device(id);
        if (device && device->enabled) return false;
        tracker_.endDevice(id, clock_.mach_absolute_time());
        return true;
    });
}

void XInput2Source::handle(const XRawEvent& event) {
    const XInputDevice* device = connection_.device(event.source);
    if (!device || !device->directTouch) return;
    const ContactKey key{event.source, static_cast<std::int32_t>(event.detail)};
    // The server has no frames; what one millisecond brings is one, until a contact comes again:
    // every place it was at counts.
    const bool again = std::find(inFrame_.begin(), inFrame_.end(), key) != inFrame_.end();
    if (time_ && (*time_ != event.time || again)) finishFrame();
    time_ = event.time;
    inFrame_.push_back(key);
    const Point points = desktopToPoints_.apply(
        {device->x.normalised(event.position.x), device->y.normalised(event.position.y)});
    switch (event.type) {
        case XCB_INPUT_RAW_TOUCH_BEGIN:
            touched_.insert(event.source);
            tracker_.down(key, points);
            break;
        case XCB_INPUT_RAW_TOUCH_UPDATE:
            touched_.insert(event.source);
            tracker_.motion(key, points);
            break;
        case XCB_INPUT_RAW_TOUCH_END:
            tracker_.up(key);
            break;
        default:
            break;
    }
}

void XInput2Source::finishFrame() {
    if (!time_) return;
    const MachTime time = serverTimeToMachTime(*time_, clock_.mach_absolute_time());
    time_.reset();
    inFrame_.clear();
    tracker_.frame(time);
}

}  // namespace skavlo
