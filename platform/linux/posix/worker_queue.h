#pragma once

#include <condition_variable>
#include <deque>
#include <mutex>
#include <string>
#include <thread>

#include "platform/serial_queue.h"

namespace skavlo {

// One thread that runs the blocks in order of posting. Destroying the queue, which must not happen
// on its own thread, runs everything that was posted and waits for it, but sleeps no more: what was
// begun is finished, and nobody who closes a window waits for a pause.
class WorkerQueue final : public SerialQueue {
  public:
    // What follows the label's last dot becomes the thread's name.
    explicit WorkerQueue(const std::string& label = {});
    ~WorkerQueue() override;
    WorkerQueue(const WorkerQueue&) = delete;
    WorkerQueue& operator=(const WorkerQueue&) = delete;

    void async(std::function<void()> block) override;
    // Ends early once the queue is being destroyed.
    void usleep(std::uint32_t microseconds) override;

  private:
    void run();

    std::mutex mutex_;
    std::condition_variable changed_;
    std::deque<std::function<void()>> blocks_;
    bool ending_ = false;
    std::thread thread_;
};

}  // namespace skavlo
