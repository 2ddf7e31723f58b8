#include <string>
#include <vector>

#include "platform/linux/input/input_selector.h"
#include "platform/linux/loop/asio_run_loop.h"
#include "tools/doctor/checks.h"
#include "tools/doctor/overlay_view.h"
#include "tools/doctor/touch_devices.h"

namespace skavlo::doctor {

namespace {

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
    if (const auto view = overlayView(surroundings)) return view->source;
    AsioRunLoop loop;
    InputSelector selector(loop.context(), {});
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
