// A connection of its own to the X server's input: device table, raw events, pointer position.
#pragma once

#include <xcb/xcb.h>
#include <xcb/xinput.h>

#include <asio/io_context.hpp>
#include <cstdint>
#include <deque>
#include <functional>
#include <memory>
#include <optional>
#include <string_view>
#include <vector>

#include "platform/geometry.h"
#include "platform/linux/input/x_input_devices.h"
#include "platform/linux/loop/xcb_watch.h"
#include "platform/result.h"

namespace skavlo {

struct XRawEvent {
    std::uint16_t type;    // XCB_INPUT_RAW_...
    std::uint16_t device;  // the master
    std::uint16_t source;  // the device itself
    std::uint32_t detail;  // touch id or physical button
    std::uint32_t time;    // server milliseconds
    // Of axes 0 and 1, in the device's units, after its coordinate transformation.
    Point position;
};

struct XPointer {
    Point desktopPixels;
    bool primaryHeld = false;  // button 1 after the user's button mapping
};

// Handlers run on the loop and must not destroy the connection.
class XInputConnection {
  public:
    using Connect = std::function<xcb_connection_t*()>;

    // Takes a few round trips. Fails without a server or without version 2.2 of its extension.
    static Result<std::unique_ptr<XInputConnection>> open(asio::io_context& context,
                                                          const Connect& connect);
    ~XInputConnection();
    XInputConnection(const XInputConnection&) = delete;
    XInputConnection& operator=(const XInputConnection&) = delete;

    [[nodiscard]] const std::vector<XInputDevice>& devices() const { return devices_; }
    [[nodiscard]] const XInputDevice* device(std::uint16_t id) const;
    [[nodiscard]] const XInputDevice* deviceOfNode(std::string_view node) const;
    [[nodiscard]] bool hasTouchscreen() const;

    // Raw events of these kinds (XCB_INPUT_XI_EVENT_MASK_...), each once, whatever grabs exist.
    void selectRaw(std::uint32_t mask);
    // Without waiting: the answer comes through the loop. None when the device is gone.
    void queryPointer(std::uint16_t master,
                      std::function<void(const std::optional<XPointer>&)> answer);
    [[nodiscard]] bool isPrimaryButton(std::uint32_t physicalButton) const;

    void setRawHandler(std::function<void(const XRawEvent&)> handler);
    // After the last of the events that have arrived so far.
    void setDrainedHandler(std::function<void()> handler);
    // Devices came, went or changed.
    void setDevicesHandler(std::function<void()> handler);
    // The server is gone; nothing more will come.
    void setLostHandler(std::function<void()> handler);

  private:
    struct Query {
        xcb_input_xi_query_pointer_cookie_t cookie;
        std::function<void(const std::optional<XPointer>&)> answer;
    };

    XInputConnection(asio::io_context& context, xcb_connection_t* connection);
    std::optional<Error> initialise();
    void select(std::uint16_t device, std::uint32_t mask);
    void refreshDevices();
    void refreshButtons();
    void drain();
    void deliverAnswers();
    void handle(const xcb_generic_event_t& event);
    void handleInput(const xcb_ge_generic_event_t& event);

    asio::io_context& context_;
    xcb_connection_t* connection_;
    std::unique_ptr<XcbWatch> watch_;
    xcb_window_t root_ = 0;
    std::uint8_t extension_ = 0;
    XInputAtoms atoms_{};
    std::vector<XInputDevice> devices_;
    std::vector<std::uint8_t> buttons_;
    std::deque<Query> queries_;
    bool devicesChanged_ = false;
    bool buttonsChanged_ = false;
    std::function<void(const XRawEvent&)> raw_;
    std::function<void()> drained_;
    std::function<void()> devicesHandler_;
    std::function<void()> lost_;
};

}  // namespace skavlo
