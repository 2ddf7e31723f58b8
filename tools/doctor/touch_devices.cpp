#include "tools/doctor/touch_devices.h"

#include <libudev.h>

#include <memory>

namespace skavlo::doctor {

namespace {

struct Release {
    void operator()(udev* context) const { udev_unref(context); }
    void operator()(udev_enumerate* list) const { udev_enumerate_unref(list); }
    void operator()(udev_device* device) const { udev_device_unref(device); }
};

std::string valueOf(const char* text) {
    return text ? text : "";
}

}  // namespace

std::vector<TouchDevice> touchDevices() {
    std::vector<TouchDevice> devices;
    const std::unique_ptr<udev, Release> context(udev_new());
    if (!context) return devices;
    const std::unique_ptr<udev_enumerate, Release> list(udev_enumerate_new(context.get()));
    udev_enumerate_add_match_subsystem(list.get(), "input");
    udev_enumerate_add_match_property(list.get(), "ID_INPUT_TOUCHSCREEN", "1");
    udev_enumerate_scan_devices(list.get());
    for (auto* entry = udev_enumerate_get_list_entry(list.get()); entry;
         entry = udev_list_entry_get_next(entry)) {
        const std::unique_ptr<udev_device, Release> device(
            udev_device_new_from_syspath(context.get(), udev_list_entry_get_name(entry)));
        const std::string node = device ? valueOf(udev_device_get_devnode(device.get())) : "";
        if (node.find("/event") == std::string::npos) continue;
        auto* parent = udev_device_get_parent(device.get());
        const std::string name =
            parent ? valueOf(udev_device_get_sysattr_value(parent, "name")) : "";
        devices.push_back({name.empty() ? node : name,
                           valueOf(udev_device_get_property_value(device.get(), "WL_OUTPUT"))});
    }
    return devices;
}

}  // namespace skavlo::doctor
