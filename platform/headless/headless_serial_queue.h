#pragma once

#include <deque>
#include <functional>
#include <memory>

#include "platform/headless/headless_run_loop.h"
#include "platform/serial_queue.h"

namespace skavlo {

// A serial queue on the thread of a headless run loop, whose time it shares: the loop starts its
// blocks in order of posting. While a block sleeps, the loop goes on with everything that is due,
// and further blocks wait; so one step of the loop's clock may end later than it was told to.
class HeadlessSerialQueue final : public SerialQueue {
  public:
    explicit HeadlessSerialQueue(HeadlessRunLoop& runLoop) : runLoop_(runLoop) {}
    // Runs the blocks that still wait. Not from within a block.
    ~HeadlessSerialQueue() override { runBlocks(); }
    HeadlessSerialQueue(const HeadlessSerialQueue&) = delete;
    HeadlessSerialQueue& operator=(const HeadlessSerialQueue&) = delete;

    void async(std::function<void()> block) override;
    void usleep(std::uint32_t microseconds) override;

  private:
    void runBlocks();

    HeadlessRunLoop& runLoop_;
    std::deque<std::function<void()>> blocks_;
    bool running_ = false;
    std::shared_ptr<const bool> alive_ = std::make_shared<bool>(true);
};

}  // namespace skavlo
