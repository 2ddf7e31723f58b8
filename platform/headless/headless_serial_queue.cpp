#include "platform/headless/headless_serial_queue.h"

#include <utility>

namespace skavlo {

void HeadlessSerialQueue::async(std::function<void()> block) {
    blocks_.push_back(std::move(block));
    runLoop_.async([this, alive = std::weak_ptr<const bool>(alive_)] {
        if (!alive.expired()) runBlocks();
    });
}

void HeadlessSerialQueue::usleep(std::uint32_t microseconds) {
    constexpr MachTime kNanosecondsPerMicrosecond = 1000;
    runLoop_.advanceTo(runLoop_.mach_absolute_time() + microseconds * kNanosecondsPerMicrosecond);
}

void HeadlessSerialQueue::runBlocks() {
    if (running_) return;  // called by the loop while a block sleeps
    running_ = true;
    while (!blocks_.empty()) {
        const auto block = std::move(blocks_.front());
        blocks_.pop_front();
        block();
    }
    running_ = false;
}

}  // namespace skavlo
