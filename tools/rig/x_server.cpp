#include "tools/rig/x_server.h"

#include <fcntl.h>
#include <unistd.h>
#include <xcb/randr.h>

#include <array>
#include <filesystem>
#include <fstream>
#include <utility>

#include "tools/rig/x_config.h"

namespace skavlo::rig {

namespace {

constexpr auto kStartTime = std::chrono::seconds(20);

// Removed with everything in it.
class PrivateDirectory {
  public:
    PrivateDirectory() {
        std::error_code ignored;
        std::string pattern =
            (std::filesystem::temp_directory_path(ignored) / "skavlo-rig-XXXXXX").string();
        if (mkdtemp(pattern.data()) != nullptr) {
            path_ = pattern;
        }
    }
    ~PrivateDirectory() {
        std::error_code ignored;
        if (!path_.empty()) {
            std::filesystem::remove_all(path_, ignored);
        }
    }
    PrivateDirectory(const PrivateDirectory&) = delete;
    PrivateDirectory& operator=(const PrivateDirectory&) = delete;

    [[nodiscard]] bool valid() const { return !path_.empty(); }
    [[nodiscard]] std::string file(const std::string& name) const { return path_ + "/" + name; }

  private:
    std::string path_;
};

// The server itself, not the wrapper before it: that one asks for a console or for rights, and a
// server without video hardware needs neither.
std::string serverProgram() {
    for (const char* path : {"/usr/lib/xorg/Xorg", "/usr/libexec/Xorg", "/usr/lib/Xorg"}) {
        if (access(path, X_OK) == 0) {
            return path;
        }
    }
    return "Xorg";
}

std::vector<std::string> serverArguments(const PrivateDirectory& files, const XAuthority& authority,
                                         const XServerOptions& options, int displayDescriptor) {
    std::vector<std::string> arguments = {serverProgram(),
                                          "-config",
                                          files.file("xorg.conf"),
                                          "-logfile",
                                          files.file("log"),
                                          "-auth",
                                          authority.path(),
                                          "-noreset",
                                          "-sharevts",
                                          "-novtswitch",
                                          "-keeptty",
                                          "-nolisten",
                                          "tcp",
                                          "-dpi",
                                          std::to_string(options.dpi),
                                          "-displayfd",
                                          std::to_string(displayDescriptor)};
    for (const std::string& extension : options.withoutExtensions) {
        arguments.insert(arguments.end(), {"-extension", extension});
    }
    return arguments;
}

// The number that the server writes, with a line end behind it, once it takes clients. None: it
// ended first or the deadline passed.
std::optional<std::string> readDisplayNumber(int descriptor, const Child& server,
                                             const Deadline& deadline) {
    std::string number;
    while (number.empty() || number.back() != '\n') {
        const auto ready = waitReadable({descriptor, server.endDescriptor()}, deadline);
        char byte = 0;
        if (ready != descriptor || read(descriptor, &byte, 1) != 1) {
            return std::nullopt;
        }
        number += byte;
    }
    number.pop_back();
    return number;
}

// What the server says of why it did not start: its lines marked as errors.
std::string errorLines(const std::string& log) {
    std::ifstream file(log);
    std::string result;
    for (std::string line; std::getline(file, line);) {
        const auto mark = line.find("(EE)");
        if (mark != std::string::npos && line.find("(WW)") == std::string::npos &&
            line.size() > mark + 5) {
            result += "\n    " + line.substr(mark + 5);
        }
    }
    return result;
}

Result<std::unique_ptr<TouchDevice>> touchOf(const XServerOptions& options,
                                             const std::string& socket, const Deadline& deadline) {
    if (!options.touch) {
        return std::unique_ptr<TouchDevice>();
    }
    auto device = TouchDevice::connect(socket, options.sizes.front(), deadline);
    if (!device) {
        return device.error();
    }
    return std::make_unique<TouchDevice>(std::move(*device));
}

}  // namespace

Result<XServer> XServer::start(const XServerOptions& options) {
    const Deadline deadline(kStartTime);
    const PrivateDirectory files;
    auto authority = XAuthority::create();
    if (!authority) {
        return authority.error();
    }
    int ends[2] = {-1, -1};
    if (!files.valid() || pipe2(ends, O_CLOEXEC) != 0) {
        return Error{"cannot make a private directory for the X server"};
    }
    FileDescriptor numberRead(ends[0]);
    FileDescriptor numberWrite(ends[1]);
    const std::string socket = options.touch ? files.file("touch") : "";
    std::ofstream(files.file("xorg.conf")) << xConfig(
        {.sizes = options.sizes, .touchSocket = socket, .machineDevices = options.machineDevices});
    const FileDescriptor output(
        open(files.file("output").c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0600));
    auto server = Child::start({serverArguments(files, *authority, options, numberWrite.get()),
                                {},
                                {numberWrite.get()},
                                output.get()});
    if (!server) {
        return server.error();
    }
    numberWrite.reset();
    const auto number = readDisplayNumber(numberRead.get(), *server, deadline);
    if (!number) {
        return Error{"the X server did not start" + errorLines(files.file("output"))};
    }
    auto touch = touchOf(options, socket, deadline);
    if (!touch) {
        return touch.error();
    }
    return XServer(std::move(*authority), ":" + *number, std::move(*touch), std::move(*server));
}

std::vector<std::string> XServer::environment() const {
    return {"DISPLAY=" + name_, "XAUTHORITY=" + authority_.path()};
}

void XServer::enterEnvironment() const {
    setenv("DISPLAY", name_.c_str(), 1);
    setenv("XAUTHORITY", authority_.path().c_str(), 1);
}

Result<Display> XServer::connect() const {
    return Display::connect(name_, authority_.cookie());
}

namespace {

using Resources = xcb_randr_get_screen_resources_current_reply_t;

// The mode of a size; XCB_NONE: there is none.
xcb_randr_mode_t findMode(const Resources* resources, PixelSize size) {
    auto modes = xcb_randr_get_screen_resources_current_modes_iterator(resources);
    for (; modes.rem > 0; xcb_randr_mode_info_next(&modes)) {
        if (PixelSize{modes.data->width, modes.data->height} == size) {
            return modes.data->id;
        }
    }
    return XCB_NONE;
}

void setCrtc(const Display& display, const Resources* resources, xcb_randr_mode_t mode) {
    const xcb_randr_crtc_t crtc = *xcb_randr_get_screen_resources_current_crtcs(resources);
    const xcb_randr_output_t output = *xcb_randr_get_screen_resources_current_outputs(resources);
    const auto cookie = xcb_randr_set_crtc_config(
        display.get(), crtc, XCB_CURRENT_TIME, resources->config_timestamp, 0, 0, mode,
        XCB_RANDR_ROTATION_ROTATE_0, mode == XCB_NONE ? 0 : 1,
        mode == XCB_NONE ? nullptr : &output);
    const XcbPointer<xcb_randr_set_crtc_config_reply_t> reply(
        xcb_randr_set_crtc_config_reply(display.get(), cookie, nullptr));
}

}  // namespace

Result<PixelSize> XServer::setSize(PixelSize size) {
    auto display = connect();
    if (!display) {
        return display.error();
    }
    const auto cookie = xcb_randr_get_screen_resources_current(display->get(), display->root());
    const XcbPointer<Resources> resources(
        xcb_randr_get_screen_resources_current_reply(display->get(), cookie, nullptr));
    const xcb_randr_mode_t mode =
        resources ? findMode(resources.get(), size) : xcb_randr_mode_t{XCB_NONE};
    if (mode == XCB_NONE) {
        return Error{"the X server has no mode " + modeName(size)};
    }
    // Off while the root window changes: an output must never lie outside of it.
    setCrtc(*display, resources.get(), XCB_NONE);
    xcb_randr_set_screen_size(
        display->get(), display->root(), static_cast<std::uint16_t>(size.width),
        static_cast<std::uint16_t>(size.height), static_cast<std::uint32_t>(size.width * 254 / 960),
        static_cast<std::uint32_t>(size.height * 254 / 960));
    setCrtc(*display, resources.get(), mode);
    if (touch_) {
        touch_->setScreen(size);
    }
    const PixelSize now = display->rootSize();
    return now == size ? Result<PixelSize>(now) : Error{"the X server kept its size"};
}

}  // namespace skavlo::rig
