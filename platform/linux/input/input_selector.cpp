#include "platform/linux/input/input_selector.h"

#include <utility>

namespace skavlo {

const char* name(InputSourceKind kind) {
    switch (kind) {
        case InputSourceKind::libinput:
            return "libinput";
        case InputSourceKind::xinput2:
            return "xinput2";
        case InputSourceKind::pointer:
            return "pointer";
        case InputSourceKind::none:
            break;
    }
    return "none";
}

InputSelector::InputSelector(asio::io_context& context, InputOptions options)
    : context_(context),
      options_(std::move(options)),
      tracker_([this] { return mainSizeInPoints(layout_); },
               [this](const HidEvent& event) { deliver(event); }) {}

InputSelector::~InputSelector() = default;

void InputSelector::scheduleWithMainRunLoop() {
    if (options_.layout) layout_ = options_.layout();
    if (!sleep_)
        sleep_ = std::make_unique<SleepWatch>(
            context_, SleepWatch::openClockJumps(), &SleepWatch::sleptSoFar,
            [this] { tracker_.endAll(clock_.mach_absolute_time()); });
    openX();
    openLibinput();
    choose();
}

void InputSelector::openX() {
    if (!options_.connectX || x_) return;
    auto opened = XInputConnection::open(context_, options_.connectX);
    if (!opened) return;
    x_ = std::move(*opened);
    x_->setDevicesHandler([this] { xDevicesChanged(); });
    x_->setLostHandler([this, alive = std::weak_ptr(alive_)] {
        if (!alive.expired()) xLost();
    });
}

void InputSelector::openLibinput() {
    if (!options_.udev || libinput_) return;
    DeviceOpener& opener = options_.opener ? *options_.opener : directOpener_;
    auto opened =
        LibinputSource::open(context_, opener, tracker_, clock_, layout_,
                             [this](const std::string& node) { return xPlacement(node); });
    if (!opened) return;
    libinput_ = std::move(*opened);
    libinput_->setDevicesHandler([this] { choose(); });
}

// Without the server the rest goes on: on Wayland it was never more than a help.
void InputSelector::xLost() {
    xinput2_.reset();
    pointer_.reset();
    x_.reset();
    if (libinput_) libinput_->placementsChanged();
    choose();
}

void InputSelector::xDevicesChanged() {
    if (libinput_) libinput_->placementsChanged();
    if (xinput2_) xinput2_->devicesChanged();
    if (pointer_) pointer_->devicesChanged();
    choose();
}

std::optional<XDevicePlacement> InputSelector::xPlacement(const std::string& node) const {
    const XInputDevice* device = x_ ? x_->deviceOfNode(node) : nullptr;
    if (!device || !device->coordinateTransformation) return std::nullopt;
    return XDevicePlacement{*device->coordinateTransformation, device->calibration};
}

InputSourceKind InputSelector::wantedSource() const {
    if (libinput_ && libinput_->deviceCount() > 0) return InputSourceKind::libinput;
    if (!x_) return InputSourceKind::none;
    return x_->hasTouchscreen() ? InputSourceKind::xinput2 : InputSourceKind::pointer;
}

void InputSelector::choose() {
    const InputSourceKind wanted = wantedSource();
    if (wanted != source_) change(wanted);
    noteTouchOutput();
}

void InputSelector::change(InputSourceKind wanted) {
    xinput2_.reset();
    pointer_.reset();
    tracker_.endAll(clock_.mach_absolute_time());
    if (wanted == InputSourceKind::xinput2)
        xinput2_ = std::make_unique<XInput2Source>(*x_, tracker_, clock_, layout_);
    if (wanted == InputSourceKind::pointer)
        pointer_ = std::make_unique<PointerSource>(*x_, tracker_, clock_, layout_);
    source_ = wanted;
    if (sourceHandler_) sourceHandler_(source_);
}

std::string InputSelector::touchOutput() const {
    if (source_ == InputSourceKind::libinput) return libinput_->mappedOutput();
    if (source_ != InputSourceKind::xinput2) return {};
    for (const XInputDevice& device : x_->devices()) {
        if (!device.enabled || !device.directTouch) continue;
        std::string output =
            mappedOutput(layout_, {.desktopTransform = device.coordinateTransformation});
        if (!output.empty()) return output;
    }
    return {};
}

// The handler may change the layout, which leads here again, and then to the same name.
void InputSelector::noteTouchOutput() {
    std::string output = touchOutput();
    if (output == touchOutput_) return;
    touchOutput_ = std::move(output);
    if (touchOutputHandler_) touchOutputHandler_(touchOutput_);
}

void InputSelector::layoutChanged() {
    if (options_.layout) layout_ = options_.layout();
    if (libinput_) libinput_->setLayout(layout_);
    if (xinput2_) xinput2_->setLayout(layout_);
    if (pointer_) pointer_->setLayout(layout_);
    noteTouchOutput();
}

void InputSelector::registerEventCallback(HidEventCallback callback, void* target, void* refcon) {
    callback_ = callback;
    target_ = target;
    refcon_ = refcon;
}

void InputSelector::unregisterEventCallback(HidEventCallback callback, void* target, void* refcon) {
    if (callback == callback_ && target == target_ && refcon == refcon_) callback_ = nullptr;
}

MachTime InputSelector::mach_absolute_time() const {
    return clock_.mach_absolute_time();
}

void InputSelector::setSourceHandler(std::function<void(InputSourceKind)> handler) {
    sourceHandler_ = std::move(handler);
}

void InputSelector::setTouchOutputHandler(std::function<void(const std::string&)> handler) {
    touchOutputHandler_ = std::move(handler);
}

void InputSelector::deliver(const HidEvent& event) {
    if (callback_) callback_(target_, refcon_, this, event);
}

}  // namespace skavlo
