#include <libudev.h>
#include <xcb/xcb.h>

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "platform/linux/input/input_selector.h"
#include "platform/linux/loop/asio_run_loop.h"
#include "tools/doctor/checks.h"

namespace skavlo::doctor {

namespace {

struct Release {
    void operator()(udev* context) const { udev_unref(context); }
    void operator()(udev_enumerate* list) const { udev_enumerate_unref(list); }
    void operator()(udev_device* device) const { udev_device_unref(device); }
};

struct TouchDevice {
    std::string name;
};

std::string valueOf(const char* text) {
    return text ? text : "";
}

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
        devices.push_back({name.empty() ? node : name});
    }
    return devices;
}

std::string namesOf(const std::vector<TouchDevice>& devices) {
    std::string names;
    for (const TouchDevice& device : devices) names += (names.empty() ? "" : ", ") + device.name;
    return names;
}

Finding devicesFound(const std::vector<TouchDevice>& devices) {
    if (!devices.empty()) {
        const std::string names = namesOf(devices);
        return {"touch", Level::ok, {"触摸屏：" + names, "touchscreens: " + names}};
    }
    return {"touch",
            Level::warn,
            {"内核没有报告触摸屏", "the kernel reports no touchscreen"},
            {"连接触摸屏；否则按住指针按键代替手指",
             "connect one; without, the pointer with its button held stands in for a finger"}};
}

InputSourceKind sourceInUse(const Surroundings& surroundings) {
    AsioRunLoop loop;
    InputOptions options;
    if (!surroundings.value("DISPLAY").empty())
        options.connectX = [] { return xcb_connect(nullptr, nullptr); };
    InputSelector selector(loop.context(), std::move(options));
    selector.scheduleWithMainRunLoop();
    return selector.source();
}

Finding sourceFound(InputSourceKind source) {
    switch (source) {
        case InputSourceKind::libinput:
            return {
                "source",
                Level::ok,
                {"直接读取触摸设备（libinput）", "touches are read from the devices (libinput)"}};
        case InputSourceKind::xinput2:
            return {"source",
                    Level::ok,
                    {"触摸来自 X 服务器（XInput 2）", "touches come from the X server (XInput 2)"}};
        case InputSourceKind::pointer:
            return {"source", Level::ok, {"指针代替手指", "the pointer stands in for a finger"}};
        case InputSourceKind::none:
            break;
    }
    return {"source",
            Level::warn,
            {"以你的权限读不到任何触摸", "with your own rights no touch can be read"},
            {"让覆盖层以 root 运行（见 helper），或在 X11 会话中运行",
             "let the overlay run as root (see helper), or run it in an X11 session"}};
}

}  // namespace

Findings checkTouches(const Surroundings& surroundings) {
    const std::vector<TouchDevice> devices = touchDevices();
    // As root the overlay can read what this process perhaps cannot.
    const bool direct = !devices.empty() && overlayIsRoot(surroundings);
    return {devicesFound(devices),
            sourceFound(direct ? InputSourceKind::libinput : sourceInUse(surroundings))};
}

}  // namespace skavlo::doctor
