#include "tools/rig/screenshot.h"

#include <sys/ipc.h>
#include <sys/shm.h>
#include <xcb/shm.h>

#include <cstring>
#include <optional>
#include <vector>

namespace skavlo::rig {

namespace {

constexpr std::uint32_t kAllPlanes = ~0U;
constexpr std::uint32_t kOpaque = 0xFF000000;

// Memory shared with the server, marked for removal at once, so that a killed process leaves none.
class SharedMemory {
  public:
    SharedMemory(const Display& display, std::size_t bytes) : display_(display) {
        const int id = shmget(IPC_PRIVATE, bytes, IPC_CREAT | 0600);
        if (id < 0) {
            return;
        }
        memory_ = shmat(id, nullptr, 0);
        if (valid()) {
            segment_ = xcb_generate_id(display.get());
            const auto cookie =
                xcb_shm_attach_checked(display.get(), segment_, static_cast<std::uint32_t>(id), 0);
            const XcbPointer<xcb_generic_error_t> error(xcb_request_check(display.get(), cookie));
            attached_ = error == nullptr;
        }
        shmctl(id, IPC_RMID, nullptr);
    }
    ~SharedMemory() {
        if (attached_) {
            xcb_shm_detach(display_.get(), segment_);
        }
        if (valid()) {
            shmdt(memory_);
        }
    }
    SharedMemory(const SharedMemory&) = delete;
    SharedMemory& operator=(const SharedMemory&) = delete;

    [[nodiscard]] bool attached() const { return attached_; }
    [[nodiscard]] xcb_shm_seg_t segment() const { return segment_; }
    [[nodiscard]] const void* data() const { return memory_; }

  private:
    [[nodiscard]] bool valid() const {
        return memory_ != reinterpret_cast<void*>(-1);  // NOLINT: shmat's sign of failure
    }

    const Display& display_;
    void* memory_ = reinterpret_cast<void*>(-1);  // NOLINT
    xcb_shm_seg_t segment_ = XCB_NONE;
    bool attached_ = false;
};

std::size_t bytesOf(PixelSize size) {
    return static_cast<std::size_t>(size.width) * static_cast<std::size_t>(size.height) * 4;
}

bool sharesMemory(const Display& display) {
    // Asking for an extension that is not there would break the connection.
    const auto* extension = xcb_get_extension_data(display.get(), &xcb_shm_id);
    if (!extension || !extension->present) {
        return false;
    }
    const XcbPointer<xcb_shm_query_version_reply_t> reply(
        xcb_shm_query_version_reply(display.get(), xcb_shm_query_version(display.get()), nullptr));
    return reply != nullptr;
}

// The overlay takes a client that reads much of the screen again and again for a recorder, which a
// test that only looks must not be: none of these parts is large enough.
constexpr int kStrips = 16;

// Rows from `top` to just before `bottom`, over the whole width.
struct Strip {
    int top;
    int bottom;
};

std::vector<Strip> stripsOf(PixelSize size) {
    std::vector<Strip> strips;
    for (int i = 0; i < kStrips; ++i) {
        const Strip strip{size.height * i / kStrips, size.height * (i + 1) / kStrips};
        if (strip.bottom > strip.top) {
            strips.push_back(strip);
        }
    }
    return strips;
}

// While it lives nobody else draws, so that the strips show one moment.
class ServerGrab {
  public:
    explicit ServerGrab(const Display& display) : display_(display) {
        xcb_grab_server(display_.get());
    }
    ~ServerGrab() {
        xcb_ungrab_server(display_.get());
        xcb_flush(display_.get());
    }
    ServerGrab(const ServerGrab&) = delete;
    ServerGrab& operator=(const ServerGrab&) = delete;

  private:
    const Display& display_;
};

bool captureShared(const Display& display, Bitmap& bitmap) {
    const SharedMemory memory(display, bytesOf(bitmap.size));
    if (!memory.attached()) {
        return false;
    }
    const auto width = static_cast<std::uint16_t>(bitmap.size.width);
    std::vector<xcb_shm_get_image_cookie_t> cookies;
    for (const Strip& strip : stripsOf(bitmap.size)) {
        cookies.push_back(xcb_shm_get_image(
            display.get(), display.root(), 0, static_cast<std::int16_t>(strip.top), width,
            static_cast<std::uint16_t>(strip.bottom - strip.top), kAllPlanes,
            XCB_IMAGE_FORMAT_Z_PIXMAP, memory.segment(),
            static_cast<std::uint32_t>(bytesOf({bitmap.size.width, strip.top}))));
    }
    std::size_t bytes = 0;
    for (const auto cookie : cookies) {
        const XcbPointer<xcb_shm_get_image_reply_t> reply(
            xcb_shm_get_image_reply(display.get(), cookie, nullptr));
        bytes += reply ? reply->size : 0;
    }
    if (bytes != bytesOf(bitmap.size)) {
        return false;
    }
    std::memcpy(bitmap.pixels.data(), memory.data(), bytes);
    return true;
}

bool captureSent(const Display& display, Bitmap& bitmap) {
    auto* target = reinterpret_cast<std::uint8_t*>(bitmap.pixels.data());
    for (const Strip& strip : stripsOf(bitmap.size)) {
        const PixelSize size{bitmap.size.width, strip.bottom - strip.top};
        const auto cookie = xcb_get_image(display.get(), XCB_IMAGE_FORMAT_Z_PIXMAP, display.root(),
                                          0, static_cast<std::int16_t>(strip.top),
                                          static_cast<std::uint16_t>(size.width),
                                          static_cast<std::uint16_t>(size.height), kAllPlanes);
        const XcbPointer<xcb_get_image_reply_t> reply(
            xcb_get_image_reply(display.get(), cookie, nullptr));
        if (!reply ||
            static_cast<std::size_t>(xcb_get_image_data_length(reply.get())) != bytesOf(size)) {
            return false;
        }
        std::memcpy(target, xcb_get_image_data(reply.get()), bytesOf(size));
        target += bytesOf(size);
    }
    return true;
}

}  // namespace

Result<Bitmap> captureRoot(const Display& display) {
    Bitmap bitmap{display.rootSize(), {}};
    bitmap.pixels.resize(bytesOf(bitmap.size) / 4);
    const bool shares = sharesMemory(display);
    const ServerGrab alone(display);
    const bool captured =
        (shares && captureShared(display, bitmap)) || captureSent(display, bitmap);
    if (!captured || bitmap.pixels.empty()) {
        return Error{"cannot read the screen's picture"};
    }
    for (std::uint32_t& pixel : bitmap.pixels) {
        pixel |= kOpaque;  // the root window's fourth byte means nothing
    }
    return bitmap;
}

}  // namespace skavlo::rig
