#include "tools/rig/pointer.h"

#include <xcb/xtest.h>

#include <optional>

namespace skavlo::rig {

namespace {

// None: no key gives this symbol without a modifier.
std::optional<std::uint8_t> keyCodeOf(const Display& display, std::uint32_t keysym) {
    const xcb_setup_t* setup = xcb_get_setup(display.get());
    const auto count = static_cast<std::uint8_t>(setup->max_keycode - setup->min_keycode + 1);
    const XcbPointer<xcb_get_keyboard_mapping_reply_t> mapping(xcb_get_keyboard_mapping_reply(
        display.get(), xcb_get_keyboard_mapping(display.get(), setup->min_keycode, count),
        nullptr));
    if (!mapping) {
        return std::nullopt;
    }
    const xcb_keysym_t* symbols = xcb_get_keyboard_mapping_keysyms(mapping.get());
    for (int key = 0; key < count; ++key) {
        if (symbols[key * mapping->keysyms_per_keycode] == keysym) {
            return static_cast<std::uint8_t>(setup->min_keycode + key);
        }
    }
    return std::nullopt;
}

}  // namespace

bool Pointer::fake(std::uint8_t type, std::uint8_t detail, PixelPoint place) {
    xcb_test_fake_input(display_.get(), type, detail, XCB_CURRENT_TIME, display_.root(),
                        static_cast<std::int16_t>(place.x), static_cast<std::int16_t>(place.y), 0);
    return display_.sync();
}

bool Pointer::moveTo(PixelPoint place) {
    return fake(XCB_MOTION_NOTIFY, 0, place);
}

bool Pointer::press(std::uint8_t button) {
    return fake(XCB_BUTTON_PRESS, button);
}

bool Pointer::release(std::uint8_t button) {
    return fake(XCB_BUTTON_RELEASE, button);
}

bool Pointer::click(PixelPoint place) {
    return moveTo(place) && press() && release();
}

bool Pointer::drag(const std::vector<PixelPoint>& places) {
    bool done = moveTo(places.front()) && press();
    for (const PixelPoint place : places) {
        done = done && moveTo(place);
    }
    return done && release();
}

bool Pointer::focusWindowAt(PixelPoint place) {
    const auto cookie = xcb_translate_coordinates(display_.get(), display_.root(), display_.root(),
                                                  static_cast<std::int16_t>(place.x),
                                                  static_cast<std::int16_t>(place.y));
    const XcbPointer<xcb_translate_coordinates_reply_t> reply(
        xcb_translate_coordinates_reply(display_.get(), cookie, nullptr));
    if (!reply || reply->child == XCB_NONE) {
        return false;
    }
    xcb_set_input_focus(display_.get(), XCB_INPUT_FOCUS_POINTER_ROOT, reply->child,
                        XCB_CURRENT_TIME);
    return display_.sync();
}

bool Pointer::type(std::uint32_t keysym) {
    const auto key = keyCodeOf(display_, keysym);
    return key && fake(XCB_KEY_PRESS, *key) && fake(XCB_KEY_RELEASE, *key);
}

}  // namespace skavlo::rig
