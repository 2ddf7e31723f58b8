#include "platform/linux/input/x_input_devices.h"

#include <algorithm>
#include <cstring>
#include <string_view>
#include <utility>

#include "platform/linux/xcb_reply.h"

namespace skavlo {

namespace {

using PropertyReply = XcbReply<xcb_input_xi_get_property_reply_t>;

double toDouble(xcb_input_fp3232_t value) {
    constexpr double kTwoTo32 = 4294967296.0;
    return value.integral + value.frac / kTwoTo32;
}

void readClass(const xcb_input_device_class_t& any, XInputDevice& device) {
    if (any.type == XCB_INPUT_DEVICE_CLASS_TYPE_TOUCH) {
        const auto& touch = reinterpret_cast<const xcb_input_touch_class_t&>(any);
        device.directTouch = touch.mode == XCB_INPUT_TOUCH_MODE_DIRECT;
    } else if (any.type == XCB_INPUT_DEVICE_CLASS_TYPE_VALUATOR) {
        const auto& axis = reinterpret_cast<const xcb_input_valuator_class_t&>(any);
        const XInputDevice::Axis range{toDouble(axis.min), toDouble(axis.max)};
        if (axis.number == 0) device.x = range;
        if (axis.number == 1) device.y = range;
    }
}

bool isMaster(std::uint16_t type) {
    return type == XCB_INPUT_DEVICE_TYPE_MASTER_POINTER ||
           type == XCB_INPUT_DEVICE_TYPE_MASTER_KEYBOARD;
}

XInputDevice readDevice(const xcb_input_xi_device_info_t* info) {
    XInputDevice device;
    device.id = info->deviceid;
    device.enabled = info->enabled != 0;
    auto classes = xcb_input_xi_device_info_classes_iterator(info);
    for (; classes.rem > 0; xcb_input_device_class_next(&classes)) readClass(*classes.data, device);
    return device;
}

std::vector<XInputDevice> readDevices(xcb_connection_t* connection) {
    const XcbReply<xcb_input_xi_query_device_reply_t> reply(xcb_input_xi_query_device_reply(
        connection, xcb_input_xi_query_device(connection, XCB_INPUT_DEVICE_ALL), nullptr));
    std::vector<XInputDevice> devices;
    if (!reply) return devices;
    auto infos = xcb_input_xi_query_device_infos_iterator(reply.get());
    for (; infos.rem > 0; xcb_input_xi_device_info_next(&infos))
        if (!isMaster(infos.data->type)) devices.push_back(readDevice(infos.data));
    return devices;
}

std::string text(const PropertyReply& reply) {
    if (!reply || reply->format != 8) return {};
    const auto* items = static_cast<const char*>(xcb_input_xi_get_property_items(reply.get()));
    const std::string_view value(items, reply->num_items);
    return std::string(value.substr(0, value.find('\0')));
}

// The first two rows of a 3x3 matrix; X keeps the third at 0 0 1.
std::optional<Affine> matrix(const PropertyReply& reply) {
    constexpr std::uint32_t kItems = 9;
    if (!reply || reply->format != 32 || reply->num_items != kItems) return std::nullopt;
    float items[kItems];
    std::memcpy(items, xcb_input_xi_get_property_items(reply.get()), sizeof items);
    Affine result;
    std::copy_n(items, result.m.size(), result.m.begin());
    return result;
}

xcb_input_xi_get_property_cookie_t ask(xcb_connection_t* connection, std::uint16_t device,
                                       xcb_atom_t property) {
    constexpr std::uint32_t kWords = 1024;
    return xcb_input_xi_get_property(connection, device, 0, property, XCB_GET_PROPERTY_TYPE_ANY, 0,
                                     kWords);
}

}  // namespace

XInputAtoms internXInputAtoms(xcb_connection_t* connection) {
    const auto request = [&](std::string_view name) {
        return xcb_intern_atom(connection, 0, static_cast<std::uint16_t>(name.size()), name.data());
    };
    const auto answer = [&](xcb_intern_atom_cookie_t cookie) {
        const XcbReply<xcb_intern_atom_reply_t> reply(
            xcb_intern_atom_reply(connection, cookie, nullptr));
        return reply ? reply->atom : xcb_atom_t{XCB_ATOM_NONE};
    };
    const auto node = request("Device Node");
    const auto transformation = request("Coordinate Transformation Matrix");
    const auto calibration = request("libinput Calibration Matrix");
    return {answer(node), answer(transformation), answer(calibration)};
}

std::vector<XInputDevice> queryXInputDevices(xcb_connection_t* connection,
                                             const XInputAtoms& atoms) {
    using Cookie = xcb_input_xi_get_property_cookie_t;
    struct Cookies {
        Cookie node;
        Cookie transformation;
        Cookie calibration;
    };
    std::vector<XInputDevice> devices = readDevices(connection);
    std::vector<Cookies> asked;
    asked.reserve(devices.size());
    for (const XInputDevice& device : devices)
        asked.push_back({ask(connection, device.id, atoms.node),
                         ask(connection, device.id, atoms.transformation),
                         ask(connection, device.id, atoms.calibration)});
    const auto answer = [&](Cookie cookie) {
        return PropertyReply(xcb_input_xi_get_property_reply(connection, cookie, nullptr));
    };
    for (std::size_t i = 0; i < devices.size(); ++i) {
        devices[i].node = text(answer(asked[i].node));
        devices[i].coordinateTransformation = matrix(answer(asked[i].transformation));
        devices[i].calibration = matrix(answer(asked[i].calibration));
    }
    return devices;
}

}  // namespace skavlo
