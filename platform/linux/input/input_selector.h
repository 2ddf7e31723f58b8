#pragma once

#include <asio/io_context.hpp>
#include <functional>
#include <memory>
#include <string>

#include "platform/digitizer/contact_tracker.h"
#include "platform/hid.h"
#include "platform/linux/input/device_opener.h"
#include "platform/linux/input/libinput_source.h"
#include "platform/linux/input/pointer_source.h"
#include "platform/linux/input/sleep_watch.h"
#include "platform/linux/input/x_input_connection.h"
#include "platform/linux/input/xinput2_source.h"
#include "platform/linux/loop/asio_run_loop.h"
#include "platform/linux/output_layout.h"

namespace skavlo {

enum class InputSourceKind { none, libinput, xinput2, pointer };
const char* name(InputSourceKind kind);

struct InputOptions {
    OutputLayoutProvider layout = {};
    // A fresh connection to the X server, which is then the selector's. Empty: without X.
    XInputConnection::Connect connectX = {};
    bool udev = true;
    std::shared_ptr<DeviceOpener> opener = {};  // null: with the process's own rights
};

// The machine's touches, from one source at a time so that no contact shows twice: the devices
// themselves when at least one touchscreen or pen can be opened, else the X server's touchscreens,
// else its pointer. Chosen again whenever devices come or go; then the old source's contacts end,
// as all do when the machine has slept. All on the loop's thread.
class InputSelector final : public HidEventSystemClient {
  public:
    InputSelector(asio::io_context& context, InputOptions options);
    ~InputSelector() override;
    InputSelector(const InputSelector&) = delete;
    InputSelector& operator=(const InputSelector&) = delete;

    // Opens the sources. What cannot be opened is passed over.
    void scheduleWithMainRunLoop() override;
    // There is one callback; while there is none, contacts are still followed. Touches that were
    // down before are in the first event after.
    void registerEventCallback(HidEventCallback callback, void* target, void* refcon) override;
    void unregisterEventCallback(HidEventCallback callback, void* target, void* refcon) override;
    [[nodiscard]] MachTime mach_absolute_time() const override;

    // The outputs or their scale changed.
    void layoutChanged();

    // Told the output that the touchscreen is mapped to, or an empty name, whenever that differs.
    void setTouchOutputHandler(std::function<void(const std::string&)> handler);

    // For diagnostics.
    [[nodiscard]] InputSourceKind source() const { return source_; }
    void setSourceHandler(std::function<void(InputSourceKind)> handler);

  private:
    void deliver(const HidEvent& event);
    void openX();
    void openLibinput();
    void xLost();
    void xDevicesChanged();
    [[nodiscard]] std::optional<XDevicePlacement> xPlacement(const std::string& node) const;
    [[nodiscard]] InputSourceKind wantedSource() const;
    void choose();
    void change(InputSourceKind wanted);
    [[nodiscard]] std::string touchOutput() const;
    void noteTouchOutput();

    asio::io_context& context_;
    InputOptions options_;
    DirectDeviceOpener directOpener_;
    MonotonicClock clock_;
    OutputLayout layout_;
    ContactTracker tracker_;
    HidEventCallback callback_ = nullptr;
    void* target_ = nullptr;
    void* refcon_ = nullptr;
    std::function<void(InputSourceKind)> sourceHandler_;
    std::function<void(const std::string&)> touchOutputHandler_;
    std::string touchOutput_;
    InputSourceKind source_ = InputSourceKind::none;
    std::unique_ptr<SleepWatch> sleep_;
    std::unique_ptr<XInputConnection> x_;
    std::unique_ptr<LibinputSource> libinput_;
    std::unique_ptr<XInput2Source> xinput2_;
    std::unique_ptr<PointerSource> pointer_;
    std::shared_ptr<const bool> alive_ = std::make_shared<const bool>(true);
};

}  // namespace skavlo
