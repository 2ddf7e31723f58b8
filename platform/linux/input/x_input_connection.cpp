#include "platform/linux/input/x_input_connection.h"

#include <xcb/xcbext.h>

#include <algorithm>
#include <asio/post.hpp>
#include <utility>

#include "platform/linux/xcb_reply.h"

namespace skavlo {

namespace {

constexpr std::uint16_t kMajor = 2;  // 2.2 brought touches
constexpr std::uint16_t kMinor = 2;

double toDouble(xcb_input_fp1616_t value) {
    constexpr double kTwoTo16 = 65536.0;
    return value / kTwoTo16;
}

double toDouble(xcb_input_fp3232_t value) {
    constexpr double kTwoTo32 = 4294967296.0;
    return value.integral + value.frac / kTwoTo32;
}

// Values follow for the axes whose bits are set, lowest first.
Point readPosition(const xcb_input_raw_touch_begin_event_t& event) {
    Point position;
    if (xcb_input_raw_touch_begin_valuator_mask_length(&event) == 0) return position;
    const std::uint32_t mask = *xcb_input_raw_touch_begin_valuator_mask(&event);
    const xcb_input_fp3232_t* value = xcb_input_raw_touch_begin_axisvalues(&event);
    if (mask & 1) position.x = toDouble(*value++);
    if (mask & 2) position.y = toDouble(*value);
    return position;
}

XPointer readPointer(const xcb_input_xi_query_pointer_reply_t& reply) {
    constexpr std::uint32_t kPrimary = 1U << 1;
    XPointer pointer;
    pointer.desktopPixels = {toDouble(reply.root_x), toDouble(reply.root_y)};
    if (reply.buttons_len > 0)
        pointer.primaryHeld = (*xcb_input_xi_query_pointer_buttons(&reply) & kPrimary) != 0;
    return pointer;
}

}  // namespace

Result<std::unique_ptr<XInputConnection>> XInputConnection::open(asio::io_context& context,
                                                                 const Connect& connect) {
    xcb_connection_t* connection = connect ? connect() : nullptr;
    if (!connection) return Error{"no X server is configured"};
    std::unique_ptr<XInputConnection> opened(new XInputConnection(context, connection));
    if (std::optional<Error> error = opened->initialise()) return *error;
    return opened;
}

XInputConnection::XInputConnection(asio::io_context& context, xcb_connection_t* connection)
    : context_(context), connection_(connection) {}

XInputConnection::~XInputConnection() {
    watch_.reset();
    xcb_disconnect(connection_);
}

std::optional<Error> XInputConnection::initialise() {
    if (xcb_connection_has_error(connection_)) return Error{"cannot connect to the X server"};
    const auto* extension = xcb_get_extension_data(connection_, &xcb_input_id);
    if (!extension || !extension->present) return Error{"the X server has no input extension"};
    extension_ = extension->major_opcode;
    const XcbReply<xcb_input_xi_query_version_reply_t> version(xcb_input_xi_query_version_reply(
        connection_, xcb_input_xi_query_version(connection_, kMajor, kMinor), nullptr));
    if (!version ||
        std::pair(version->major_version, version->minor_version) < std::pair(kMajor, kMinor))
        return Error{"the X server's input extension is older than 2.2"};
    root_ = xcb_setup_roots_iterator(xcb_get_setup(connection_)).data->root;
    atoms_ = internXInputAtoms(connection_);
    // First select, then read: no change is missed in between.
    select(XCB_INPUT_DEVICE_ALL, XCB_INPUT_XI_EVENT_MASK_HIERARCHY |
                                     XCB_INPUT_XI_EVENT_MASK_DEVICE_CHANGED |
                                     XCB_INPUT_XI_EVENT_MASK_PROPERTY);
    refreshButtons();
    refreshDevices();
    watch_ = std::make_unique<XcbWatch>(
        context_, connection_,
        XcbWatch::Handlers{.event = [this](const auto& event) { handle(event); },
                           .drained = [this] { drain(); },
                           .lost =
                               [this] {
                                   if (lost_) asio::post(context_, lost_);
                               }});
    return xcb_connection_has_error(connection_) ? std::optional(Error{"the X server hung up"})
                                                 : std::nullopt;
}

const XInputDevice* XInputConnection::device(std::uint16_t id) const {
    const auto it = std::find_if(devices_.begin(), devices_.end(),
                                 [&](const XInputDevice& d) { return d.id == id; });
    return it == devices_.end() ? nullptr : &*it;
}

const XInputDevice* XInputConnection::deviceOfNode(std::string_view node) const {
    if (node.empty()) return nullptr;
    const auto it = std::find_if(devices_.begin(), devices_.end(),
                                 [&](const XInputDevice& d) { return d.node == node; });
    return it == devices_.end() ? nullptr : &*it;
}

bool XInputConnection::hasTouchscreen() const {
    return std::any_of(devices_.begin(), devices_.end(),
                       [](const XInputDevice& d) { return d.enabled && d.directTouch; });
}

void XInputConnection::select(std::uint16_t device, std::uint32_t mask) {
    struct {
        xcb_input_event_mask_t head;
        std::uint32_t mask;
    } selection{{device, 1}, mask};
    xcb_input_xi_select_events(connection_, root_, 1, &selection.head);
    if (watch_) watch_->flush();
}

// A raw event goes out for the device and again for its master; only the masters' are selected.
void XInputConnection::selectRaw(std::uint32_t mask) {
    select(XCB_INPUT_DEVICE_ALL_MASTER, mask);
}

void XInputConnection::refreshButtons() {
    const XcbReply<xcb_get_pointer_mapping_reply_t> reply(
        xcb_get_pointer_mapping_reply(connection_, xcb_get_pointer_mapping(connection_), nullptr));
    if (!reply) return;
    const std::uint8_t* map = xcb_get_pointer_mapping_map(reply.get());
    buttons_.assign(map, map + xcb_get_pointer_mapping_map_length(reply.get()));
}

bool XInputConnection::isPrimaryButton(std::uint32_t physicalButton) const {
    const bool mapped = physicalButton >= 1 && physicalButton <= buttons_.size();
    return (mapped ? buttons_[physicalButton - 1] : physicalButton) == 1;
}

void XInputConnection::queryPointer(std::uint16_t master,
                                    std::function<void(const std::optional<XPointer>&)> answer) {
    queries_.push_back({xcb_input_xi_query_pointer(connection_, root_, master), std::move(answer)});
    watch_->flush();
}

void XInputConnection::drain() {
    deliverAnswers();
    if (devicesChanged_) refreshDevices();
    if (drained_) drained_();
}

void XInputConnection::deliverAnswers() {
    while (!queries_.empty()) {
        void* reply = nullptr;
        xcb_generic_error_t* error = nullptr;
        if (!xcb_poll_for_reply(connection_, queries_.front().cookie.sequence, &reply, &error))
            return;
        const XcbReply<xcb_generic_error_t> ownedError(error);
        const XcbReply<xcb_input_xi_query_pointer_reply_t> owned(
            static_cast<xcb_input_xi_query_pointer_reply_t*>(reply));
        const Query query = std::move(queries_.front());
        queries_.pop_front();
        query.answer(owned ? std::optional(readPointer(*owned)) : std::nullopt);
    }
}

void XInputConnection::handle(const xcb_generic_event_t& event) {
    constexpr std::uint8_t kSentByClient = 0x80;
    const int type = event.response_type & ~kSentByClient;
    if (type == XCB_MAPPING_NOTIFY) {
        const auto& mapping = reinterpret_cast<const xcb_mapping_notify_event_t&>(event);
        if (mapping.request == XCB_MAPPING_POINTER) refreshButtons();
    } else if (type == XCB_GE_GENERIC) {
        const auto& generic = reinterpret_cast<const xcb_ge_generic_event_t&>(event);
        if (generic.extension == extension_) handleInput(generic);
    }
}

void XInputConnection::handleInput(const xcb_ge_generic_event_t& event) {
    switch (event.event_type) {
        case XCB_INPUT_DEVICE_CHANGED: {
            // A master that follows another of its devices changes nothing here.
            const auto& changed = reinterpret_cast<const xcb_input_device_changed_event_t&>(event);
            if (changed.reason == XCB_INPUT_CHANGE_REASON_DEVICE_CHANGE) devicesChanged_ = true;
            break;
        }
        case XCB_INPUT_HIERARCHY:
        case XCB_INPUT_PROPERTY:
            devicesChanged_ = true;
            break;
        default: {
            if (devicesChanged_) refreshDevices();
            const auto& raw = reinterpret_cast<const xcb_input_raw_touch_begin_event_t&>(event);
            if (raw_)
                raw_({raw.event_type, raw.deviceid, raw.sourceid, raw.detail, raw.time,
                      readPosition(raw)});
        }
    }
}

void XInputConnection::refreshDevices() {
    devicesChanged_ = false;
    devices_ = queryXInputDevices(connection_, atoms_);
    if (devicesHandler_) devicesHandler_();
}

void XInputConnection::setRawHandler(std::function<void(const XRawEvent&)> handler) {
    raw_ = std::move(handler);
}
void XInputConnection::setDrainedHandler(std::function<void()> handler) {
    drained_ = std::move(handler);
}
void XInputConnection::setDevicesHandler(std::function<void()> handler) {
    devicesHandler_ = std::move(handler);
}
void XInputConnection::setLostHandler(std::function<void()> handler) {
    lost_ = std::move(handler);
}

}  // namespace skavlo
