#include "tools/doctor/overlay_view.h"

#include <string>

#include "platform/linux/input/mapping.h"
#include "platform/linux/loop/asio_run_loop.h"
#include "platform/linux/window_servers/open.h"
#include "platform/linux/window_servers/touches.h"
#include "tools/doctor/checks.h"
#include "tools/doctor/touch_devices.h"

namespace skavlo::doctor {

namespace {

// The first of those that udev maps to an output that there is.
std::string outputOfUdev(const OutputLayout& layout) {
    for (const TouchDevice& device : touchDevices()) {
        std::string output = mappedOutput(layout, {.outputName = device.output});
        if (!output.empty()) return output;
    }
    return {};
}

}  // namespace

std::optional<OverlayView> overlayView(const Surroundings& surroundings) {
    AsioRunLoop loop;
    auto opened = openWindowServer(loop);
    if (!opened) return std::nullopt;
    const auto touches = touchesOf(loop, *opened->server, opened->kind);
    touches->scheduleWithMainRunLoop();
    OverlayView view;
    view.source = touches->source();
    // As root it could read what this process may not.
    if (view.source != InputSourceKind::libinput && overlayIsRoot(surroundings)) {
        const std::string output = outputOfUdev(opened->server->layout());
        if (!output.empty()) opened->server->setTouchOutput(output);
    }
    view.layout = opened->server->layout();
    return view;
}

}  // namespace skavlo::doctor
