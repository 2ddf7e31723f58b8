#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <memory>

#include "platform/geometry.h"
#include "platform/linux/wayland/wayland_pointer.h"

namespace skavlo {

// Buffers of one size in memory that the compositor reads, made when they are needed and used again
// and again.
class ShmBuffers {
  public:
    // `startsEmpty`: frame 0, before the first, is an empty one; else it is unknown. `released` is
    // called whenever a buffer may be drawn into again.
    ShmBuffers(wl_shm& shm, PixelSize size, bool startsEmpty, std::function<void()> released);

    struct Draw {
        std::uint32_t* pixels = nullptr;  // rows without gaps; null: out of memory
        int age = 0;                      // as in Frame
    };
    // Whether one of them can be drawn into.
    [[nodiscard]] bool available() const;
    // The available one that lacks the fewest frames.
    Draw begin();
    // The drawn one, which the compositor now holds.
    wl_buffer* commit();
    [[nodiscard]] PixelSize size() const { return size_; }

  private:
    // The one on the display, the one that waits for the next refresh, and one to draw into.
    static constexpr std::size_t kMost = 3;

    struct Buffer {
        ShmBuffers* owner = nullptr;
        WaylandPointer<wl_buffer> buffer;
        std::uint32_t* pixels = nullptr;
        std::size_t bytes = 0;
        std::uint64_t frame = 0;  // the one it holds
        bool held = false;        // by the compositor
        ~Buffer();
    };

    [[nodiscard]] Buffer* find() const;
    std::unique_ptr<Buffer> make();

    wl_shm& shm_;
    PixelSize size_;
    bool startsEmpty_;
    std::function<void()> released_;
    std::array<std::unique_ptr<Buffer>, kMost> buffers_;
    Buffer* drawing_ = nullptr;
    std::uint64_t frames_ = 0;
};

}  // namespace skavlo
