#include "tools/rig/compositor.h"

#include <fcntl.h>
#include <xcb/xfixes.h>

namespace skavlo::rig {

namespace {

constexpr auto kStartTime = std::chrono::seconds(20);

bool owned(const Display& display, xcb_atom_t selection) {
    const XcbPointer<xcb_get_selection_owner_reply_t> reply(xcb_get_selection_owner_reply(
        display.get(), xcb_get_selection_owner(display.get(), selection), nullptr));
    return reply && reply->owner != XCB_NONE;
}

void selectOwnerEvents(const Display& display, xcb_atom_t selection) {
    const XcbPointer<xcb_xfixes_query_version_reply_t> version(xcb_xfixes_query_version_reply(
        display.get(), xcb_xfixes_query_version(display.get(), 5, 0), nullptr));
    xcb_xfixes_select_selection_input(display.get(), display.root(), selection,
                                      XCB_XFIXES_SELECTION_EVENT_MASK_SET_SELECTION_OWNER);
}

}  // namespace

Result<Compositor> Compositor::start(const XServer& server) {
    // An empty configuration instead of the user's: no shadows, no fading, nothing moves by itself.
    return start(server, {"picom", "--backend", "xrender", "--config", "/dev/null"});
}

Result<Compositor> Compositor::start(const XServer& server, const std::vector<std::string>& command,
                                     const std::vector<std::string>& variables) {
    auto display = server.connect();
    if (!display) {
        return display.error();
    }
    const xcb_atom_t selection = display->atom("_NET_WM_CM_S0");
    selectOwnerEvents(*display, selection);
    const FileDescriptor silent(open("/dev/null", O_WRONLY | O_CLOEXEC));
    auto environment = server.environment();
    environment.insert(environment.end(), variables.begin(), variables.end());
    auto process = Child::start({command, environment, {}, silent.get()});
    if (!process) {
        return process.error();
    }
    const Deadline deadline(kStartTime);
    while (!owned(*display, selection)) {
        if (!display->waitForEvent(deadline, {process->endDescriptor()})) {
            const auto status = process->wait(Deadline(std::chrono::milliseconds(0)));
            return Error{"the compositing manager did not start" +
                         (status ? ": it " + describeStatus(*status) : "")};
        }
    }
    return Compositor(std::move(*process));
}

}  // namespace skavlo::rig
