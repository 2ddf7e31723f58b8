#include "platform/linux/input/libinput_source.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <string_view>
#include <utility>

namespace skavlo {

namespace {

constexpr std::int32_t kPenContact = -2;  // no touch: those have slots, or -1 without slots
constexpr MachTime kNanosecondsPerMicrosecond = 1000;

bool hasProperty(udev_device* device, const char* name) {
    const char* value = udev_device_get_property_value(device, name);
    return value && std::string_view(value) != "0";
}

std::string nodeOf(libinput_device* handle) {
    udev_device* device = libinput_device_get_udev_device(handle);
    if (!device) return {};
    const char* node = udev_device_get_devnode(device);
    std::string result = node ? node : "";
    udev_device_unref(device);
    return result;
}

std::string outputNameOf(libinput_device* handle) {
    const char* name = libinput_device_get_output_name(handle);  // udev's WL_OUTPUT
    return name ? name : "";
}

// libinput applies the calibration itself, by default that of LIBINPUT_CALIBRATION_MATRIX. Only
// when the user gave the X server another one is there something to say.
void calibrate(libinput_device* handle, const std::optional<Affine>& calibration) {
    if (!libinput_device_config_calibration_has_matrix(handle)) return;
    float wanted[6];
    float current[6];
    libinput_device_config_calibration_get_default_matrix(handle, wanted);
    libinput_device_config_calibration_get_matrix(handle, current);
    if (calibration)
        std::transform(calibration->m.begin(), calibration->m.end(), wanted,
                       [](double value) { return static_cast<float>(value); });
    if (!std::equal(wanted, wanted + 6, current))
        libinput_device_config_calibration_set_matrix(handle, wanted);
}

}  // namespace

Result<std::unique_ptr<LibinputSource>> LibinputSource::open(asio::io_context& context,
                                                             DeviceOpener& opener,
                                                             ContactTracker& tracker,
                                                             const Clock& clock,
                                                             OutputLayout layout, XLookup xLookup) {
    std::unique_ptr<LibinputSource> source(
        new LibinputSource(opener, tracker, clock, std::move(layout), std::move(xLookup)));
    if (!source->start(context)) return Error{"udev's seat0 cannot be followed"};
    return source;
}

LibinputSource::LibinputSource(DeviceOpener& opener, ContactTracker& tracker, const Clock& clock,
                               OutputLayout layout, XLookup xLookup)
    : opener_(opener),
      tracker_(tracker),
      clock_(clock),
      layout_(std::move(layout)),
      xLookup_(std::move(xLookup)) {}

LibinputSource::~LibinputSource() = default;

bool LibinputSource::start(asio::io_context& context) {
    static constexpr libinput_interface kInterface{&openDevice, &closeDevice};
    udev_.reset(udev_new());
    if (!udev_) return false;
    libinput_.reset(libinput_udev_create_context(&kInterface, this, udev_.get()));
    if (!libinput_ || libinput_udev_assign_seat(libinput_.get(), "seat0") != 0) return false;
    dispatch();
    watch_ = std::make_unique<DescriptorWatch>(context, libinput_get_fd(libinput_.get()),
                                               [this] { dispatch(); });
    return true;
}

int LibinputSource::openDevice(const char* path, int flags, void* self) {
    auto* source = static_cast<LibinputSource*>(self);
    return source->wanted(path) ? source->opener_.open(path, flags) : -ENODEV;
}

void LibinputSource::closeDevice(int descriptor, void* self) {
    static_cast<LibinputSource*>(self)->opener_.close(descriptor);
}

// A refused device is simply none to libinput.
bool LibinputSource::wanted(const char* path) const {
    const std::string_view whole(path);
    const std::string name(whole.substr(whole.rfind('/') + 1));
    const std::unique_ptr<udev_device, Unref> device(
        udev_device_new_from_subsystem_sysname(udev_.get(), "input", name.c_str()));
    if (!device) return false;
    if (hasProperty(device.get(), "ID_INPUT_TOUCHSCREEN")) return true;
    return hasProperty(device.get(), "ID_INPUT_TABLET") &&
           !hasProperty(device.get(), "ID_INPUT_TABLET_PAD");
}

void LibinputSource::setDevicesHandler(std::function<void()> handler) {
    devicesHandler_ = std::move(handler);
}

void LibinputSource::dispatch() {
    libinput_dispatch(libinput_.get());
    while (libinput_event* event = libinput_get_event(libinput_.get())) {
        handle(event);
        libinput_event_destroy(event);
    }
}

void LibinputSource::handle(libinput_event* event) {
    libinput_device* handle = libinput_event_get_device(event);
    const libinput_event_type type = libinput_event_get_type(event);
    if (type == LIBINPUT_EVENT_DEVICE_ADDED) {
        addDevice(handle);
    } else if (type == LIBINPUT_EVENT_DEVICE_REMOVED) {
        removeDevice(handle);
    } else if (const Device* device = find(handle)) {
        handleTouch(event, type, *device);
        handlePen(event, type, *device);
    }
}

void LibinputSource::handleTouch(libinput_event* event, libinput_event_type type,
                                 const Device& device) {
    if (type < LIBINPUT_EVENT_TOUCH_DOWN || type > LIBINPUT_EVENT_TOUCH_FRAME) return;
    libinput_event_touch* touch = libinput_event_get_touch_event(event);
    if (type == LIBINPUT_EVENT_TOUCH_FRAME) {
        tracker_.frame(libinput_event_touch_get_time_usec(touch) * kNanosecondsPerMicrosecond);
        return;
    }
    const ContactKey key{device.id, libinput_event_touch_get_slot(touch)};
    if (type == LIBINPUT_EVENT_TOUCH_UP || type == LIBINPUT_EVENT_TOUCH_CANCEL) {
        tracker_.up(key);
        return;
    }
    const Point points = device.toPoints.apply({libinput_event_touch_get_x_transformed(touch, 1),
                                                libinput_event_touch_get_y_transformed(touch, 1)});
    if (type == LIBINPUT_EVENT_TOUCH_DOWN)
        tracker_.down(key, points);
    else
        tracker_.motion(key, points);
}

void LibinputSource::handlePen(libinput_event* event, libinput_event_type type,
                               const Device& device) {
    if (type < LIBINPUT_EVENT_TABLET_TOOL_AXIS || type > LIBINPUT_EVENT_TABLET_TOOL_TIP) return;
    libinput_event_tablet_tool* pen = libinput_event_get_tablet_tool_event(event);
    const ContactKey key{device.id, kPenContact};
    const bool away = type == LIBINPUT_EVENT_TABLET_TOOL_PROXIMITY;
    if (away || libinput_event_tablet_tool_get_tip_state(pen) == LIBINPUT_TABLET_TOOL_TIP_UP) {
        tracker_.up(key);
    } else {
        tracker_.motion(
            key, device.toPoints.apply({libinput_event_tablet_tool_get_x_transformed(pen, 1),
                                        libinput_event_tablet_tool_get_y_transformed(pen, 1)}));
    }
    tracker_.frame(libinput_event_tablet_tool_get_time_usec(pen) * kNanosecondsPerMicrosecond);
}

void LibinputSource::addDevice(libinput_device* handle) {
    if (!libinput_device_has_capability(handle, LIBINPUT_DEVICE_CAP_TOUCH) &&
        !libinput_device_has_capability(handle, LIBINPUT_DEVICE_CAP_TABLET_TOOL)) {
        // udev and libinput disagree on what it is.
        libinput_device_config_send_events_set_mode(handle, LIBINPUT_CONFIG_SEND_EVENTS_DISABLED);
        return;
    }
    Device device{nextId_++, handle, nodeOf(handle), {}, {}};
    place(device);
    devices_.push_back(std::move(device));
    if (devicesHandler_) devicesHandler_();
}

void LibinputSource::removeDevice(libinput_device* handle) {
    const Device* device = find(handle);
    if (!device) return;
    tracker_.endDevice(device->id, clock_.mach_absolute_time());
    std::erase_if(devices_, [&](const Device& d) { return d.handle == handle; });
    if (devicesHandler_) devicesHandler_();
}

void LibinputSource::place(Device& device) {
    const std::optional<XDevicePlacement> x = xLookup_ ? xLookup_(device.node) : std::nullopt;
    calibrate(device.handle, x ? x->calibration : std::nullopt);
    const DevicePlacement placement{
        .outputName = outputNameOf(device.handle),
        .desktopTransform = x ? std::optional(x->desktopTransform) : std::nullopt};
    device.toPoints = deviceToPoints(layout_, placement);
    device.mappedOutput = skavlo::mappedOutput(layout_, placement);
}

std::string LibinputSource::mappedOutput() const {
    const Device* found = nullptr;
    for (const Device& device : devices_) {
        if (device.mappedOutput.empty()) continue;
        if (libinput_device_has_capability(device.handle, LIBINPUT_DEVICE_CAP_TOUCH) != 0)
            return device.mappedOutput;
        if (!found) found = &device;
    }
    return found ? found->mappedOutput : std::string();
}

LibinputSource::Device* LibinputSource::find(libinput_device* handle) {
    const auto it = std::find_if(devices_.begin(), devices_.end(),
                                 [&](const Device& d) { return d.handle == handle; });
    return it == devices_.end() ? nullptr : &*it;
}

void LibinputSource::setLayout(const OutputLayout& layout) {
    layout_ = layout;
    placementsChanged();
}

// A finger that rests says nothing of where it lies now: its contact ends, and begins anew when it
// moves.
void LibinputSource::placementsChanged() {
    for (Device& device : devices_) {
        const Affine before = device.toPoints;
        place(device);
        if (device.toPoints != before) tracker_.endDevice(device.id, clock_.mach_absolute_time());
    }
}

}  // namespace skavlo
