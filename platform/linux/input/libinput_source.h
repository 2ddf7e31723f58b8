#pragma once

#include <libinput.h>
#include <libudev.h>

#include <asio/io_context.hpp>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/digitizer/contact_tracker.h"
#include "platform/linux/input/device_opener.h"
#include "platform/linux/input/mapping.h"
#include "platform/linux/input/touch_source.h"
#include "platform/linux/loop/descriptor_watch.h"
#include "platform/result.h"
#include "platform/time.h"

namespace skavlo {

// How the X server, if it drives the same device, was told to place it.
struct XDevicePlacement {
    Affine desktopTransform;
    std::optional<Affine> calibration;
};

// Touchscreens and pens of udev's seat0.
//
// Only they are opened: a keyboard or a mouse is never read, so its events cost nothing here.
// A finger stays a finger while another virtual terminal is in front or another program reads the
// device: contacts come and end as ever. A program that grabs a device takes it away without a
// word. The kernel does not lift fingers over a sleep of the machine; see SleepWatch.
class LibinputSource final : public TouchSource {
  public:
    // The X server's placement of a device node; none when it does not drive it.
    using XLookup = std::function<std::optional<XDevicePlacement>(const std::string& node)>;

    // Fails without udev. A machine without devices, or without the right to open any, is no
    // failure: deviceCount() is 0 until one can be opened.
    static Result<std::unique_ptr<LibinputSource>> open(asio::io_context& context,
                                                        DeviceOpener& opener,
                                                        ContactTracker& tracker, const Clock& clock,
                                                        OutputLayout layout, XLookup xLookup);
    ~LibinputSource() override;
    LibinputSource(const LibinputSource&) = delete;
    LibinputSource& operator=(const LibinputSource&) = delete;

    // Touchscreens and pens that are open.
    [[nodiscard]] std::size_t deviceCount() const { return devices_.size(); }
    // The output that the first touchscreen (else pen) is mapped to; empty: to none in particular.
    [[nodiscard]] std::string mappedOutput() const;
    // Called after each change of deviceCount(); may destroy nothing.
    void setDevicesHandler(std::function<void()> handler);

    void setLayout(const OutputLayout& layout) override;
    // What xLookup answers may have changed.
    void placementsChanged();

  private:
    struct Device {
        std::uint32_t id;
        libinput_device* handle;
        std::string node;
        Affine toPoints;
        std::string mappedOutput;
    };

    LibinputSource(DeviceOpener& opener, ContactTracker& tracker, const Clock& clock,
                   OutputLayout layout, XLookup xLookup);
    bool start(asio::io_context& context);
    static int openDevice(const char* path, int flags, void* self);
    static void closeDevice(int descriptor, void* self);
    [[nodiscard]] bool wanted(const char* path) const;

    void dispatch();
    void handle(libinput_event* event);
    void handleTouch(libinput_event* event, libinput_event_type type, const Device& device);
    void handlePen(libinput_event* event, libinput_event_type type, const Device& device);
    void addDevice(libinput_device* handle);
    void removeDevice(libinput_device* handle);
    void place(Device& device);
    Device* find(libinput_device* handle);

    struct Unref {
        void operator()(udev* context) const { udev_unref(context); }
        void operator()(udev_device* device) const { udev_device_unref(device); }
        void operator()(libinput* context) const { libinput_unref(context); }
    };

    DeviceOpener& opener_;
    ContactTracker& tracker_;
    const Clock& clock_;
    OutputLayout layout_;
    XLookup xLookup_;
    std::function<void()> devicesHandler_;
    std::vector<Device> devices_;
    std::uint32_t nextId_ = 1;
    std::unique_ptr<udev, Unref> udev_;
    std::unique_ptr<libinput, Unref> libinput_;
    std::unique_ptr<DescriptorWatch> watch_;  // goes before the descriptor it watches
};

}  // namespace skavlo
