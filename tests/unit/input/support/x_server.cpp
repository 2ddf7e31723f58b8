#include "tests/unit/input/support/x_server.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <unistd.h>
#include <xcb/xcbext.h>
#include <xcb/xinput.h>
#include <xcb/xtest.h>
#include <xorg/xf86-input-inputtest-protocol.h>

#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <string_view>
#include <vector>

namespace skavlo::test {

namespace {

constexpr int kStartMilliseconds = 30'000;
constexpr const char* kProgram = "/usr/lib/xorg/Xorg";
constexpr const char* kTouchDriver = "/usr/lib/xorg/modules/input/inputtest_drv.so";

void writeConfiguration(const std::string& directory, bool touchscreen) {
    std::ofstream file(directory + "/xorg.conf");
    file << R"(Section "ServerFlags"
  Option "AutoAddDevices" "false"
  Option "DontVTSwitch" "on"
EndSection
Section "Device"
  Identifier "card"
  Driver "dummy"
  VideoRam 32768
EndSection
Section "Monitor"
  Identifier "monitor"
  HorizSync 5-1000
  VertRefresh 5-200
  Modeline "1280x720" 74.50 1280 1344 1472 1664 720 723 728 748
EndSection
Section "Screen"
  Identifier "screen"
  Device "card"
  Monitor "monitor"
  DefaultDepth 24
  SubSection "Display"
    Depth 24
    Modes "1280x720"
    Virtual 1280 720
  EndSubSection
EndSection
)";
    if (touchscreen)
        file << R"(Section "InputDevice"
  Identifier "touchscreen"
  Driver "inputtest"
  Option "DeviceType" "Touch"
  Option "TouchCount" "10"
  Option "SocketPath" ")"
             << directory << "/touch\"\nEndSection\n";
    file << "Section \"ServerLayout\"\n  Identifier \"layout\"\n  Screen \"screen\"\n"
         << (touchscreen ? "  InputDevice \"touchscreen\"\n" : "") << "EndSection\n";
}

[[noreturn]] void become(const std::string& directory, int displayDescriptor) {
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    unsetenv("LD_PRELOAD");  // what mocks the test's devices is not for the server
    const int log = open((directory + "/output").c_str(), O_WRONLY | O_CREAT, 0600);
    dup2(log, STDOUT_FILENO);
    dup2(log, STDERR_FILENO);
    const std::string descriptor = std::to_string(displayDescriptor);
    const std::string configuration = directory + "/xorg.conf";
    const std::string logFile = directory + "/log";
    execl(kProgram, kProgram, "-displayfd", descriptor.c_str(), "-config", configuration.c_str(),
          "-logfile", logFile.c_str(), "-noreset", "-sharevts", "-novtswitch", "-keeptty",
          "-nolisten", "tcp", nullptr);
    _exit(127);
}

// The display's number with its line end; empty when the server ended or the time was up.
std::string readNumber(int descriptor) {
    std::string number;
    pollfd ready{descriptor, POLLIN, 0};
    while (number.find('\n') == std::string::npos) {
        char part[16];
        if (poll(&ready, 1, kStartMilliseconds) <= 0) return {};
        const ssize_t count = read(descriptor, part, sizeof part);
        if (count <= 0) return {};
        number.append(part, static_cast<std::size_t>(count));
    }
    number.resize(number.find('\n'));
    return number;
}

template <typename T>
bool sendWhole(int descriptor, const T& message) {
    return write(descriptor, &message, sizeof message) == static_cast<ssize_t>(sizeof message);
}

template <typename T>
bool receiveWhole(int descriptor, T& message) {
    return recv(descriptor, &message, sizeof message, MSG_WAITALL) ==
           static_cast<ssize_t>(sizeof message);
}

}  // namespace

std::unique_ptr<XServer> XServer::start(bool touchscreen, std::string& reason) {
    if (access(kProgram, X_OK) != 0 || access(kTouchDriver, R_OK) != 0) {
        reason = "Xorg with its inputtest driver is not installed";
        return nullptr;
    }
    std::unique_ptr<XServer> server(new XServer);
    if (!server->launch(touchscreen, reason)) return nullptr;
    return server;
}

bool XServer::launch(bool touchscreen, std::string& reason) {
    char name[] = "/tmp/skavlo-x-XXXXXX";
    if (!mkdtemp(name)) return reason = "no temporary directory", false;
    directory_ = name;
    writeConfiguration(directory_, touchscreen);
    int ends[2];
    if (pipe(ends) != 0) return reason = "no pipe", false;
    pid_ = fork();
    if (pid_ == 0) become(directory_, ends[1]);
    close(ends[1]);
    const std::string number = readNumber(ends[0]);
    close(ends[0]);
    display_ = ":" + number;
    reason = "Xorg does not start here";
    if (number.empty()) return false;
    control_ = connect();
    return !xcb_connection_has_error(control_) && (!touchscreen || connectTouchscreen());
}

XServer::~XServer() {
    if (control_) xcb_disconnect(control_);
    kill();
    if (touchscreen_ >= 0) close(touchscreen_);
    std::error_code ignored;
    if (!directory_.empty()) std::filesystem::remove_all(directory_, ignored);
}

void XServer::kill() {
    if (pid_ <= 0) return;
    ::kill(pid_, SIGTERM);
    waitpid(pid_, nullptr, 0);
    pid_ = -1;
}

xcb_connection_t* XServer::connect() const {
    return xcb_connect(display_.c_str(), nullptr);
}

bool XServer::connectTouchscreen() {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    const std::string path = directory_ + "/touch";
    std::strncpy(address.sun_path, path.c_str(), sizeof address.sun_path - 1);
    touchscreen_ = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    if (::connect(touchscreen_, reinterpret_cast<sockaddr*>(&address), sizeof address) != 0)
        return false;
    xf86ITEventClientVersion version{};
    version.header = {sizeof version, XF86IT_EVENT_CLIENT_VERSION};
    version.major = XF86IT_PROTOCOL_VERSION_MAJOR;
    version.minor = XF86IT_PROTOCOL_VERSION_MINOR;
    xf86ITResponseServerVersion answer{};
    return sendWhole(touchscreen_, version) && receiveWhole(touchscreen_, answer);
}

void XServer::touch(std::uint32_t id, std::uint32_t type, double x, double y) {
    xf86ITEventTouch event{};
    event.header = {sizeof event, XF86IT_EVENT_TOUCH};
    event.touchid = id;
    event.touch_type = type;
    event.valuators.mask[0] = 0b11;
    event.valuators.valuators[0] = x;
    event.valuators.valuators[1] = y;
    xf86ITEventWaitForSync wait{{sizeof wait, XF86IT_EVENT_WAIT_FOR_SYNC}};
    xf86ITResponseSyncFinished done{};
    if (!sendWhole(touchscreen_, event) || !sendWhole(touchscreen_, wait) ||
        !receiveWhole(touchscreen_, done))
        std::abort();
}

void XServer::touchBegin(std::uint32_t id, double x, double y) {
    touch(id, XCB_INPUT_TOUCH_BEGIN, x, y);
}
void XServer::touchUpdate(std::uint32_t id, double x, double y) {
    touch(id, XCB_INPUT_TOUCH_UPDATE, x, y);
}
void XServer::touchEnd(std::uint32_t id, double x, double y) {
    touch(id, XCB_INPUT_TOUCH_END, x, y);
}

// Twice: by the second answer every client that was waiting has had its turn, and what events the
// first let loose are written.
void XServer::sync() {
    for (int i = 0; i < 2; ++i)
        std::free(xcb_get_input_focus_reply(control_, xcb_get_input_focus(control_), nullptr));
}

xcb_atom_t XServer::atom(const char* name) {
    auto* reply = xcb_intern_atom_reply(
        control_, xcb_intern_atom(control_, 0, static_cast<std::uint16_t>(std::strlen(name)), name),
        nullptr);
    const xcb_atom_t result = reply->atom;
    std::free(reply);
    return result;
}

std::uint16_t XServer::deviceId(const char* name) {
    std::free(xcb_input_xi_query_version_reply(control_, xcb_input_xi_query_version(control_, 2, 2),
                                               nullptr));
    auto* reply = xcb_input_xi_query_device_reply(
        control_, xcb_input_xi_query_device(control_, XCB_INPUT_DEVICE_ALL), nullptr);
    std::uint16_t id = 0;
    auto infos = xcb_input_xi_query_device_infos_iterator(reply);
    for (; infos.rem > 0; xcb_input_xi_device_info_next(&infos)) {
        const std::string_view its(xcb_input_xi_device_info_name(infos.data), infos.data->name_len);
        if (its == name) id = infos.data->deviceid;
    }
    std::free(reply);
    return id;
}

void XServer::changeProperty(const char* device, const char* property, const char* type,
                             std::uint8_t format, std::uint32_t items, const void* data) {
    xcb_input_xi_change_property(control_, deviceId(device), XCB_PROP_MODE_REPLACE, format,
                                 atom(property), atom(type), items, data);
    sync();
}

void XServer::setTransformation(const char* device, const float (&matrix)[9]) {
    changeProperty(device, "Coordinate Transformation Matrix", "FLOAT", 32, 9, matrix);
}

void XServer::setNode(const char* device, const std::string& node) {
    std::string padded = node;  // requests are padded to four bytes from what lies behind the data
    padded.resize(node.size() + 4);
    changeProperty(device, "Device Node", "STRING", 8, static_cast<std::uint32_t>(node.size()),
                   padded.data());
}

void XServer::setEnabled(const char* device, bool enabled) {
    const std::uint32_t value = enabled ? 1 : 0;  // sent as one byte, padded
    changeProperty(device, "Device Enabled", "INTEGER", 8, 1, &value);
}

void XServer::moveMouse(int x, int y) {
    xcb_test_fake_input(control_, XCB_MOTION_NOTIFY, 0, XCB_CURRENT_TIME, XCB_NONE,
                        static_cast<std::int16_t>(x), static_cast<std::int16_t>(y), 0);
    sync();
}

void XServer::button(int physicalButton, bool pressed) {
    xcb_test_fake_input(control_, pressed ? XCB_BUTTON_PRESS : XCB_BUTTON_RELEASE,
                        static_cast<std::uint8_t>(physicalButton), XCB_CURRENT_TIME, XCB_NONE, 0, 0,
                        0);
    sync();
}

void XServer::setButtonMapping(int physicalPrimary) {
    auto* old = xcb_get_pointer_mapping_reply(control_, xcb_get_pointer_mapping(control_), nullptr);
    std::vector<std::uint8_t> map(
        static_cast<std::size_t>(xcb_get_pointer_mapping_map_length(old)));
    for (std::size_t i = 0; i < map.size(); ++i) map[i] = static_cast<std::uint8_t>(i + 1);
    std::swap(map[0], map[static_cast<std::size_t>(physicalPrimary) - 1]);
    std::free(old);
    std::free(xcb_set_pointer_mapping_reply(
        control_,
        xcb_set_pointer_mapping(control_, static_cast<std::uint8_t>(map.size()), map.data()),
        nullptr));
    sync();
}

}  // namespace skavlo::test
