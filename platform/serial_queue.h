#pragma once

#include <cstdint>
#include <functional>

namespace skavlo {

// Runs blocks one after another, in order of posting, away from the main thread.
class SerialQueue {
  public:
    virtual ~SerialQueue() = default;
    // From any thread.
    virtual void async(std::function<void()> block) = 0;
    // From within a block of this queue: the block goes on after that time, the others wait.
    virtual void usleep(std::uint32_t microseconds) = 0;
};

}  // namespace skavlo
