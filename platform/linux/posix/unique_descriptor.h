#pragma once

#include <unistd.h>

#include <utility>

namespace skavlo {

// Owns one open file descriptor, or none (-1).
class UniqueDescriptor {
  public:
    UniqueDescriptor() = default;
    explicit UniqueDescriptor(int descriptor) : descriptor_(descriptor) {}
    UniqueDescriptor(UniqueDescriptor&& other) noexcept : descriptor_(other.release()) {}
    UniqueDescriptor& operator=(UniqueDescriptor&& other) noexcept {
        reset(other.release());
        return *this;
    }
    ~UniqueDescriptor() { reset(); }

    [[nodiscard]] int get() const { return descriptor_; }
    explicit operator bool() const { return descriptor_ >= 0; }
    [[nodiscard]] int release() { return std::exchange(descriptor_, -1); }
    void reset(int descriptor = -1) {
        const int old = std::exchange(descriptor_, descriptor);
        if (old >= 0) ::close(old);
    }

  private:
    int descriptor_ = -1;
};

}  // namespace skavlo
