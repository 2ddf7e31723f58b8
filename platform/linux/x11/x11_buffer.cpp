#include "platform/linux/x11/x11_buffer.h"

#include <sys/mman.h>
#include <unistd.h>
#include <xcb/xcbext.h>

#include <algorithm>

#include "platform/linux/posix/unique_descriptor.h"

namespace skavlo {

namespace {
constexpr std::uint8_t kDepth = 32;
constexpr std::size_t kPixelBytes = 4;
}  // namespace

X11Buffer::X11Buffer(X11Connection& connection, PixelSize size)
    : connection_(connection),
      size_(size),
      bytes_(static_cast<std::size_t>(size.width) * static_cast<std::size_t>(size.height) *
             kPixelBytes) {
    shared_ = attachShared();
    if (shared_) return;
    void* memory =
        mmap(nullptr, bytes_, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (memory != MAP_FAILED) pixels_ = static_cast<std::uint32_t*>(memory);
}

X11Buffer::~X11Buffer() {
    if (shared_) xcb_shm_detach(connection_.get(), segment_);
    if (pixels_) munmap(pixels_, bytes_);
}

// The memory is handed over as a descriptor: the server may run as another user, who could not
// attach a segment of ours.
bool X11Buffer::attachShared() {
    auto* c = connection_.get();
    const auto* extension = connection_.isLocal() ? connection_.extension(xcb_shm_id) : nullptr;
    if (!extension) return false;
    const XcbReply<xcb_shm_query_version_reply_t> version(
        xcb_shm_query_version_reply(c, xcb_shm_query_version(c), nullptr));
    const bool takesDescriptors =
        version && (version->major_version > 1 ||
                    (version->major_version == 1 && version->minor_version >= 2));
    if (!takesDescriptors) return false;
    UniqueDescriptor memory(memfd_create("skavlo-frame", MFD_CLOEXEC));
    if (!memory || ftruncate(memory.get(), static_cast<off_t>(bytes_)) != 0) return false;
    void* address = mmap(nullptr, bytes_, PROT_READ | PROT_WRITE, MAP_SHARED, memory.get(), 0);
    if (address == MAP_FAILED) return false;
    segment_ = xcb_generate_id(c);
    const XcbReply<xcb_generic_error_t> refused(
        xcb_request_check(c, xcb_shm_attach_fd_checked(c, segment_, memory.release(), 1)));
    if (refused) {
        munmap(address, bytes_);
        return false;
    }
    pixels_ = static_cast<std::uint32_t*>(address);
    completionEvent_ = extension->first_event + XCB_SHM_COMPLETION;
    return true;
}

void X11Buffer::put(xcb_window_t window, xcb_gcontext_t gc, std::span<const PixelRect> rects) {
    if (!pixels_ || rects.empty()) return;
    if (shared_) {
        putShared(window, gc, rects);
    } else {
        for (const PixelRect& rect : rects) send(window, gc, rect);
        fence_ = xcb_get_input_focus(connection_.get()).sequence;
    }
    beingRead_ = true;
    connection_.flush();
}

void X11Buffer::putShared(xcb_window_t window, xcb_gcontext_t gc,
                          std::span<const PixelRect> rects) {
    for (const PixelRect& rect : rects) {
        const bool last = &rect == &rects.back();
        const auto x = static_cast<std::int16_t>(rect.x);
        const auto y = static_cast<std::int16_t>(rect.y);
        xcb_shm_put_image(connection_.get(), window, gc, static_cast<std::uint16_t>(size_.width),
                          static_cast<std::uint16_t>(size_.height), static_cast<std::uint16_t>(x),
                          static_cast<std::uint16_t>(y), static_cast<std::uint16_t>(rect.width),
                          static_cast<std::uint16_t>(rect.height), x, y, kDepth,
                          XCB_IMAGE_FORMAT_Z_PIXMAP, last ? 1 : 0, segment_, 0);
    }
}

// In bands that fit into one request.
void X11Buffer::send(xcb_window_t window, xcb_gcontext_t gc, const PixelRect& rect) {
    constexpr std::size_t kHeaderBytes = 64;
    const std::size_t largest =
        std::size_t{xcb_get_maximum_request_length(connection_.get())} * kPixelBytes - kHeaderBytes;
    const auto width = static_cast<std::size_t>(rect.width);
    const int rows = std::max(1, static_cast<int>(largest / (width * kPixelBytes)));
    for (int top = rect.y; top < rect.bottom(); top += rows) {
        const int height = std::min(rows, rect.bottom() - top);
        packed_.clear();
        for (int y = top; y < top + height; ++y) {
            const std::uint32_t* row =
                pixels_ + static_cast<std::ptrdiff_t>(y) * size_.width + rect.x;
            packed_.insert(packed_.end(), row, row + width);
        }
        xcb_put_image(connection_.get(), XCB_IMAGE_FORMAT_Z_PIXMAP, window, gc,
                      static_cast<std::uint16_t>(rect.width), static_cast<std::uint16_t>(height),
                      static_cast<std::int16_t>(rect.x), static_cast<std::int16_t>(top), 0, kDepth,
                      static_cast<std::uint32_t>(packed_.size() * kPixelBytes),
                      reinterpret_cast<const std::uint8_t*>(packed_.data()));
    }
}

bool X11Buffer::handle(const xcb_generic_event_t& event) {
    if (!shared_ || (event.response_type & 0x7f) != completionEvent_) return false;
    if (reinterpret_cast<const xcb_shm_completion_event_t&>(event).shmseg != segment_) return false;
    beingRead_ = false;
    return true;
}

bool X11Buffer::pollFence() {
    if (shared_ || !beingRead_) return false;
    void* reply = nullptr;
    xcb_generic_error_t* error = nullptr;
    if (xcb_poll_for_reply(connection_.get(), fence_, &reply, &error) == 0) return false;
    std::free(reply);
    std::free(error);
    beingRead_ = false;
    return true;
}

}  // namespace skavlo
