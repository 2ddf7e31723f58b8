#include "platform/linux/x11/x11_outputs.h"

#include <xcb/randr.h>

#include <charconv>
#include <string>
#include <string_view>

namespace skavlo {

namespace {

constexpr double kDpiOfScaleOne = 96;

std::string resources(const X11Connection& connection) {
    constexpr std::uint32_t kLargest = 1U << 16U;  // in units of 4 bytes
    const auto cookie = xcb_get_property(connection.get(), 0, connection.root(),
                                         XCB_ATOM_RESOURCE_MANAGER, XCB_ATOM_STRING, 0, kLargest);
    const XcbReply<xcb_get_property_reply_t> reply(
        xcb_get_property_reply(connection.get(), cookie, nullptr));
    if (!reply) return {};
    return {static_cast<const char*>(xcb_get_property_value(reply.get())),
            static_cast<std::size_t>(xcb_get_property_value_length(reply.get()))};
}

Rotation rotationOf(std::uint16_t randr) {
    if ((randr & XCB_RANDR_ROTATION_ROTATE_90) != 0) return Rotation::left;
    if ((randr & XCB_RANDR_ROTATION_ROTATE_180) != 0) return Rotation::inverted;
    if ((randr & XCB_RANDR_ROTATION_ROTATE_270) != 0) return Rotation::right;
    return Rotation::normal;
}

}  // namespace

double scaleFromResources(const std::string& text) {
    constexpr std::string_view kKey = "Xft.dpi:";
    constexpr double kSmallest = 48;
    constexpr double kLargest = 960;
    std::size_t at = text.find(kKey);
    while (at != std::string::npos && at != 0 && text[at - 1] != '\n') {
        at = text.find(kKey, at + 1);
    }
    if (at == std::string::npos) return 1;
    const std::size_t value = text.find_first_not_of(" \t", at + kKey.size());
    if (value == std::string::npos) return 1;
    double dpi = 0;
    std::from_chars(text.data() + value, text.data() + text.size(), dpi);
    return dpi >= kSmallest && dpi <= kLargest ? dpi / kDpiOfScaleOne : 1;
}

X11Outputs::X11Outputs(X11Connection& connection) : connection_(connection) {
    const std::uint32_t mask = XCB_EVENT_MASK_STRUCTURE_NOTIFY | XCB_EVENT_MASK_PROPERTY_CHANGE |
                               XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY;
    xcb_change_window_attributes(connection_.get(), connection_.root(), XCB_CW_EVENT_MASK, &mask);
    if (const auto* randr = connection_.extension(xcb_randr_id)) {
        randrEvent_ = randr->first_event;
        const XcbReply<xcb_randr_query_version_reply_t> version(xcb_randr_query_version_reply(
            connection_.get(), xcb_randr_query_version(connection_.get(), 1, 3), nullptr));
        xcb_randr_select_input(connection_.get(), connection_.root(),
                               XCB_RANDR_NOTIFY_MASK_SCREEN_CHANGE |
                                   XCB_RANDR_NOTIFY_MASK_CRTC_CHANGE |
                                   XCB_RANDR_NOTIFY_MASK_OUTPUT_CHANGE);
    }
    update();
    connection_.addEventHandler([this](const xcb_generic_event_t& event) { handle(event); });
}

void X11Outputs::handle(const xcb_generic_event_t& event) {
    const int type = event.response_type & 0x7f;
    const bool randrChanged =
        randrEvent_ >= 0 && (type == randrEvent_ + XCB_RANDR_SCREEN_CHANGE_NOTIFY ||
                             type == randrEvent_ + XCB_RANDR_NOTIFY);
    const bool rootResized =
        type == XCB_CONFIGURE_NOTIFY &&
        reinterpret_cast<const xcb_configure_notify_event_t&>(event).window == connection_.root();
    const bool scaleChanged = type == XCB_PROPERTY_NOTIFY &&
                              reinterpret_cast<const xcb_property_notify_event_t&>(event).atom ==
                                  XCB_ATOM_RESOURCE_MANAGER;
    if (!randrChanged && !rootResized && !scaleChanged) return;
    update();
    announce();
}

void X11Outputs::announce() {
    for (const auto& handler : changeHandlers_) handler();
}

void X11Outputs::setTouchOutput(const std::string& name) {
    touchOutput_ = name;
    const std::size_t main = chooseMainOutput(layout_.outputs, touchOutput_);
    if (main == layout_.main) return;
    layout_.main = main;
    announce();
}

void X11Outputs::update() {
    OutputLayout layout;
    layout.scale = scaleFromResources(resources(connection_));
    const XcbReply<xcb_get_geometry_reply_t> root(xcb_get_geometry_reply(
        connection_.get(), xcb_get_geometry(connection_.get(), connection_.root()), nullptr));
    layout.desktop = root ? PixelSize{root->width, root->height}
                          : PixelSize{connection_.screen().width_in_pixels,
                                      connection_.screen().height_in_pixels};
    if (randrEvent_ >= 0) readRandr(layout);
    layout.main = chooseMainOutput(layout.outputs, touchOutput_);
    layout_ = std::move(layout);
}

void X11Outputs::readRandr(OutputLayout& layout) {
    auto* c = connection_.get();
    const auto primaryCookie = xcb_randr_get_output_primary(c, connection_.root());
    const XcbReply<xcb_randr_get_screen_resources_current_reply_t> all(
        xcb_randr_get_screen_resources_current_reply(
            c, xcb_randr_get_screen_resources_current(c, connection_.root()), nullptr));
    const XcbReply<xcb_randr_get_output_primary_reply_t> primary(
        xcb_randr_get_output_primary_reply(c, primaryCookie, nullptr));
    if (!all) return;
    const auto* outputs = xcb_randr_get_screen_resources_current_outputs(all.get());
    const int count = xcb_randr_get_screen_resources_current_outputs_length(all.get());
    for (int i = 0; i < count; ++i) {
        const XcbReply<xcb_randr_get_output_info_reply_t> info(xcb_randr_get_output_info_reply(
            c, xcb_randr_get_output_info(c, outputs[i], all->config_timestamp), nullptr));
        if (!info || info->crtc == XCB_NONE) continue;
        const XcbReply<xcb_randr_get_crtc_info_reply_t> crtc(xcb_randr_get_crtc_info_reply(
            c, xcb_randr_get_crtc_info(c, info->crtc, all->config_timestamp), nullptr));
        if (!crtc || crtc->width == 0 || crtc->height == 0) continue;
        OutputInfo output;
        output.name.assign(
            reinterpret_cast<const char*>(xcb_randr_get_output_info_name(info.get())),
            static_cast<std::size_t>(xcb_randr_get_output_info_name_length(info.get())));
        output.rect = {crtc->x, crtc->y, crtc->width, crtc->height};
        output.rotation = rotationOf(crtc->rotation);
        output.reflectX = (crtc->rotation & XCB_RANDR_ROTATION_REFLECT_X) != 0;
        output.reflectY = (crtc->rotation & XCB_RANDR_ROTATION_REFLECT_Y) != 0;
        output.primary = primary && primary->output == outputs[i];
        output.internal = isInternalConnector(output.name);
        layout.outputs.push_back(std::move(output));
    }
}

PixelRect X11Outputs::mainRect() const {
    if (layout_.main < layout_.outputs.size()) return layout_.outputs[layout_.main].rect;
    return {0, 0, layout_.desktop.width, layout_.desktop.height};
}

Rect X11Outputs::bounds() const {
    const PixelRect rect = mainRect();
    return {{0, 0}, {rect.width / layout_.scale, rect.height / layout_.scale}};
}

}  // namespace skavlo
