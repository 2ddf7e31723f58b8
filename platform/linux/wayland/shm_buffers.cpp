#include "platform/linux/wayland/shm_buffers.h"

#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <climits>
#include <utility>

#include "platform/linux/posix/unique_descriptor.h"

namespace skavlo {

namespace {
constexpr std::size_t kPixelBytes = 4;
}

ShmBuffers::Buffer::~Buffer() {
    if (pixels) munmap(pixels, bytes);
}

ShmBuffers::ShmBuffers(wl_shm& shm, PixelSize size, bool startsEmpty,
                       std::function<void()> released)
    : shm_(shm), size_(size), startsEmpty_(startsEmpty), released_(std::move(released)) {}

bool ShmBuffers::available() const {
    return std::any_of(buffers_.begin(), buffers_.end(),
                       [](const auto& buffer) { return !buffer || !buffer->held; });
}

ShmBuffers::Buffer* ShmBuffers::find() const {
    Buffer* best = nullptr;
    for (const auto& buffer : buffers_) {
        if (!buffer || buffer->held) continue;
        if (!best || buffer->frame > best->frame) best = buffer.get();
    }
    return best;
}

ShmBuffers::Draw ShmBuffers::begin() {
    drawing_ = find();
    if (!drawing_) {
        const auto place = std::find(buffers_.begin(), buffers_.end(), nullptr);
        if (place == buffers_.end()) return {};
        *place = make();
        drawing_ = place->get();
        if (!drawing_) return {};
    }
    // The very first frame is drawn and shown in any case: it makes the surface appear.
    const bool unknown = frames_ == 0 || (drawing_->frame == 0 && !startsEmpty_);
    const std::uint64_t age = frames_ + 1 - drawing_->frame;
    return {drawing_->pixels,
            unknown ? 0 : static_cast<int>(std::min<std::uint64_t>(age, INT_MAX))};
}

wl_buffer* ShmBuffers::commit() {
    drawing_->frame = ++frames_;
    drawing_->held = true;
    return drawing_->buffer.get();
}

// Null when there is no memory for it.
std::unique_ptr<ShmBuffers::Buffer> ShmBuffers::make() {
    auto result = std::make_unique<Buffer>();
    result->owner = this;
    const std::size_t bytes = static_cast<std::size_t>(size_.width) *
                              static_cast<std::size_t>(size_.height) * kPixelBytes;
    const UniqueDescriptor memory(memfd_create("skavlo-frame", MFD_CLOEXEC));
    if (!memory || bytes > INT32_MAX || ftruncate(memory.get(), static_cast<off_t>(bytes)) != 0) {
        return nullptr;
    }
    void* address = mmap(nullptr, bytes, PROT_READ | PROT_WRITE, MAP_SHARED, memory.get(), 0);
    if (address == MAP_FAILED) return nullptr;
    result->pixels = static_cast<std::uint32_t*>(address);
    result->bytes = bytes;
    const WaylandPointer<wl_shm_pool> pool(
        wl_shm_create_pool(&shm_, memory.get(), static_cast<std::int32_t>(bytes)));
    result->buffer.reset(wl_shm_pool_create_buffer(pool.get(), 0, size_.width, size_.height,
                                                   size_.width * static_cast<int>(kPixelBytes),
                                                   WL_SHM_FORMAT_ARGB8888));
    static constexpr wl_buffer_listener kListener{.release = [](void* data, wl_buffer*) {
        auto& buffer = *static_cast<Buffer*>(data);
        buffer.held = false;
        buffer.owner->released_();
    }};
    wl_buffer_add_listener(result->buffer.get(), &kListener, result.get());
    return result;
}

}  // namespace skavlo
