#include "tools/rig/touch_device.h"

#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>
#include <xorg/xf86-input-inputtest-protocol.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

namespace skavlo::rig {

namespace {

// The types of touch events in the X input extension, version 2.2.
constexpr unsigned kTouchBegin = 18;
constexpr unsigned kTouchUpdate = 19;
constexpr unsigned kTouchEnd = 20;

constexpr double kAxisValues = 65536;

// The server maps the values 0 to 65535 to the screen in 65536 equal steps.
double axisValue(double pixel, int extent) {
    return std::clamp(pixel * kAxisValues / std::max(extent, 1), 0.0, kAxisValues - 1);
}

}  // namespace

Result<TouchDevice> TouchDevice::connect(const std::string& socketPath, PixelSize screen,
                                         const Deadline& deadline) {
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    if (socketPath.size() >= sizeof address.sun_path) {
        return Error{"the path of the touch device's socket is too long: " + socketPath};
    }
    std::copy(socketPath.begin(), socketPath.end(), address.sun_path);
    FileDescriptor socket(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
    if (::connect(socket.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0) {
        return Error{"cannot connect to the touch device: " + std::string(std::strerror(errno))};
    }
    TouchDevice device(std::move(socket), screen);
    if (!device.sendVersion(deadline)) {
        return Error{"the touch device does not answer"};
    }
    return device;
}

bool TouchDevice::begin(unsigned id, Point pixel) {
    return sendTouch(id, kTouchBegin, pixel);
}

bool TouchDevice::update(unsigned id, Point pixel) {
    return sendTouch(id, kTouchUpdate, pixel);
}

bool TouchDevice::end(unsigned id) {
    const auto found = touching_.find(id);
    if (found == touching_.end()) {
        return true;
    }
    const bool sent = sendTouch(id, kTouchEnd, found->second);
    touching_.erase(id);
    return sent;
}

bool TouchDevice::waitForSync(const Deadline& deadline) {
    xf86ITEventWaitForSync message = {};
    message.header = {sizeof message, XF86IT_EVENT_WAIT_FOR_SYNC};
    return send(&message, sizeof message) && readUntil(XF86IT_RESPONSE_SYNC_FINISHED, deadline);
}

bool TouchDevice::sendVersion(const Deadline& deadline) {
    xf86ITEventClientVersion message = {};
    message.header = {sizeof message, XF86IT_EVENT_CLIENT_VERSION};
    message.major = 1;
    message.minor = 1;
    return send(&message, sizeof message) && readUntil(XF86IT_RESPONSE_SERVER_VERSION, deadline);
}

bool TouchDevice::sendTouch(unsigned id, unsigned type, Point pixel) {
    xf86ITEventTouch message = {};
    message.header = {sizeof message, XF86IT_EVENT_TOUCH};
    message.touchid = id;
    message.touch_type = type;
    message.valuators.mask[0] = 3;
    message.valuators.valuators[0] = axisValue(pixel.x, screen_.width);
    message.valuators.valuators[1] = axisValue(pixel.y, screen_.height);
    touching_[id] = pixel;
    return send(&message, sizeof message);
}

bool TouchDevice::send(const void* message, std::size_t length) const {
    return ::send(socket_.get(), message, length, MSG_NOSIGNAL) == static_cast<ssize_t>(length);
}

bool TouchDevice::readUntil(unsigned type, const Deadline& deadline) {
    while (true) {
        xf86ITResponseHeader header = {};
        if (received_.size() >= sizeof header) {
            std::memcpy(&header, received_.data(), sizeof header);
            if (header.length < sizeof header) {
                return false;  // no length that a message can have
            }
            if (received_.size() >= header.length) {
                received_.erase(0, header.length);
                if (header.type == type) {
                    return true;
                }
                continue;
            }
        }
        char bytes[256];
        const auto count = waitReadable({socket_.get()}, deadline)
                               ? read(socket_.get(), bytes, sizeof bytes)
                               : ssize_t{0};
        if (count <= 0) {
            return false;
        }
        received_.append(bytes, static_cast<std::size_t>(count));
    }
}

}  // namespace skavlo::rig
