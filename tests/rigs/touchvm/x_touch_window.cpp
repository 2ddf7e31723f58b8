#include "tests/rigs/touchvm/x_touch_window.h"

#include <array>
#include <utility>

namespace skavlo::test {

namespace {

using rig::XcbPointer;

double fromFixed(xcb_input_fp1616_t value) {
    return value / 65536.0;
}

std::optional<WindowTouch::Kind> kindOf(std::uint16_t eventType) {
    switch (eventType) {
        case XCB_INPUT_TOUCH_BEGIN:
            return WindowTouch::Kind::down;
        case XCB_INPUT_TOUCH_UPDATE:
            return WindowTouch::Kind::motion;
        case XCB_INPUT_TOUCH_END:
            return WindowTouch::Kind::up;
        default:
            return std::nullopt;
    }
}

}  // namespace

XTouchWindow::XTouchWindow(rig::Display display, std::uint32_t colour)
    : display_(std::move(display)) {
    const XcbPointer<xcb_input_xi_query_version_reply_t> version(xcb_input_xi_query_version_reply(
        display_.get(), xcb_input_xi_query_version(display_.get(), 2, 2), nullptr));
    const xcb_window_t window = xcb_generate_id(display_.get());
    const PixelSize size = display_.rootSize();
    const std::array<std::uint32_t, 2> values{colour, 1};
    xcb_create_window(display_.get(), XCB_COPY_FROM_PARENT, window, display_.root(), 0, 0,
                      static_cast<std::uint16_t>(size.width),
                      static_cast<std::uint16_t>(size.height), 0, XCB_WINDOW_CLASS_INPUT_OUTPUT,
                      XCB_COPY_FROM_PARENT, XCB_CW_BACK_PIXEL | XCB_CW_OVERRIDE_REDIRECT,
                      values.data());
    select(window, XCB_INPUT_DEVICE_ALL_MASTER,
           XCB_INPUT_XI_EVENT_MASK_TOUCH_BEGIN | XCB_INPUT_XI_EVENT_MASK_TOUCH_UPDATE |
               XCB_INPUT_XI_EVENT_MASK_TOUCH_END);
    select(display_.root(), XCB_INPUT_DEVICE_ALL, XCB_INPUT_XI_EVENT_MASK_HIERARCHY);
    xcb_map_window(display_.get(), window);
    display_.sync();
}

void XTouchWindow::select(xcb_window_t window, xcb_input_device_id_t device,
                          std::uint32_t events) const {
    struct {
        xcb_input_event_mask_t head;
        std::uint32_t mask;
    } const mask = {{device, 1}, events};
    xcb_input_xi_select_events(display_.get(), window, 1, &mask.head);
}

bool XTouchWindow::deviceEnabled(const std::string& name) const {
    const XcbPointer<xcb_input_xi_query_device_reply_t> reply(xcb_input_xi_query_device_reply(
        display_.get(), xcb_input_xi_query_device(display_.get(), XCB_INPUT_DEVICE_ALL), nullptr));
    if (!reply) return false;
    auto infos = xcb_input_xi_query_device_infos_iterator(reply.get());
    for (; infos.rem > 0; xcb_input_xi_device_info_next(&infos)) {
        const std::string its(xcb_input_xi_device_info_name(infos.data), infos.data->name_len);
        if (its == name) return infos.data->enabled != 0;
    }
    return false;
}

void XTouchWindow::note(const xcb_generic_event_t& event) {
    if ((event.response_type & 0x7f) != XCB_GE_GENERIC) return;
    const auto& touch = reinterpret_cast<const xcb_input_touch_begin_event_t&>(event);
    if (const auto kind = kindOf(touch.event_type)) {
        touches_.push_back({*kind, {fromFixed(touch.event_x), fromFixed(touch.event_y)}});
    }
}

bool XTouchWindow::waitUntil(const std::function<bool()>& condition,
                             const rig::Deadline& deadline) {
    while (!condition()) {
        const auto event = display_.waitForEvent(deadline);
        if (!event) return false;
        note(*event);
    }
    return true;
}

}  // namespace skavlo::test
