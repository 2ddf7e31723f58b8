// Waiting for file descriptors, always with a deadline.
#pragma once

#include <poll.h>

#include <chrono>
#include <optional>
#include <utility>
#include <vector>

namespace skavlo::rig {

class Deadline {
  public:
    // That much later where SKAVLO_SLOWNESS says how many times slower than most this machine is.
    explicit Deadline(std::chrono::milliseconds fromNow);
    explicit Deadline(std::chrono::steady_clock::time_point time) : time_(time) {}

    [[nodiscard]] bool passed() const { return std::chrono::steady_clock::now() >= time_; }
    // Milliseconds to go, rounded up; 0 once passed.
    [[nodiscard]] int remaining() const;

  private:
    std::chrono::steady_clock::time_point time_;
};

// The first of the descriptors that is readable or closed by its other end; negative ones are left
// out. None: the deadline passed first.
std::optional<int> waitReadable(const std::vector<int>& descriptors, const Deadline& deadline);

// Owns a file descriptor, or none (-1).
class FileDescriptor {
  public:
    FileDescriptor() = default;
    explicit FileDescriptor(int descriptor) : descriptor_(descriptor) {}
    FileDescriptor(FileDescriptor&& other) noexcept
        : descriptor_(std::exchange(other.descriptor_, -1)) {}
    FileDescriptor& operator=(FileDescriptor&& other) noexcept;
    ~FileDescriptor() { reset(); }

    [[nodiscard]] int get() const { return descriptor_; }
    [[nodiscard]] bool valid() const { return descriptor_ >= 0; }
    void reset();

  private:
    int descriptor_ = -1;
};

}  // namespace skavlo::rig
