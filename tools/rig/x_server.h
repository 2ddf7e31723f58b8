// A private X server without a screen, with a touch screen.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "platform/geometry.h"
#include "platform/result.h"
#include "tools/rig/child.h"
#include "tools/rig/display.h"
#include "tools/rig/touch_device.h"
#include "tools/rig/x_authority.h"

namespace skavlo::rig {

struct XServerOptions {
    // Modes of the one output; the first is in force at the start.
    std::vector<PixelSize> sizes = {{1280, 720}};
    bool touch = true;
    bool machineDevices = false;  // besides, the machine's own input devices, as they come and go
    int dpi = 96;
    std::vector<std::string> withoutExtensions = {};  // by name, as "MIT-SHM"
};

// Runs as root and as an ordinary user, and needs no terminal. The server takes the first free
// display number. Its files are removed as soon as it runs; it ends with this object, or by itself
// when this process is killed.
class XServer {
  public:
    static Result<XServer> start(const XServerOptions& options);

    XServer(XServer&&) noexcept = default;
    // Members would be replaced in the wrong order: the device must outlive its server.
    XServer& operator=(XServer&&) = delete;
    ~XServer() = default;

    [[nodiscard]] const std::string& displayName() const { return name_; }
    // What a client's environment needs: DISPLAY and XAUTHORITY, as NAME=VALUE.
    [[nodiscard]] std::vector<std::string> environment() const;
    // Sets both in this process's own environment.
    void enterEnvironment() const;
    [[nodiscard]] Result<Display> connect() const;
    // Null without a touch device.
    [[nodiscard]] TouchDevice* touch() { return touch_.get(); }
    [[nodiscard]] Child& process() { return process_; }
    // One of the sizes given at the start; the root window has it on return.
    Result<PixelSize> setSize(PixelSize size);

  private:
    XServer(XAuthority authority, std::string name, std::unique_ptr<TouchDevice> touch,
            Child process)
        : authority_(std::move(authority)),
          name_(std::move(name)),
          touch_(std::move(touch)),
          process_(std::move(process)) {}

    XAuthority authority_;
    std::string name_;
    std::unique_ptr<TouchDevice> touch_;
    Child process_;  // the last member: ends first
};

}  // namespace skavlo::rig
