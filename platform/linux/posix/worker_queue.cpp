#include "platform/linux/posix/worker_queue.h"

#include <pthread.h>

#include <chrono>
#include <utility>

namespace skavlo {

namespace {

constexpr std::size_t kLongestThreadName = 15;

}  // namespace

WorkerQueue::WorkerQueue(const std::string& label) : thread_([this] { run(); }) {
    const std::string name = label.substr(label.rfind('.') + 1).substr(0, kLongestThreadName);
    if (!name.empty()) pthread_setname_np(thread_.native_handle(), name.c_str());
}

WorkerQueue::~WorkerQueue() {
    {
        const std::lock_guard lock(mutex_);
        ending_ = true;
    }
    changed_.notify_all();
    thread_.join();
}

void WorkerQueue::async(std::function<void()> block) {
    {
        const std::lock_guard lock(mutex_);
        blocks_.push_back(std::move(block));
    }
    changed_.notify_all();
}

void WorkerQueue::usleep(std::uint32_t microseconds) {
    std::unique_lock lock(mutex_);
    changed_.wait_for(lock, std::chrono::microseconds(microseconds), [this] { return ending_; });
}

void WorkerQueue::run() {
    std::unique_lock lock(mutex_);
    for (;;) {
        changed_.wait(lock, [this] { return ending_ || !blocks_.empty(); });
        if (blocks_.empty()) return;
        std::function<void()> block = std::move(blocks_.front());
        blocks_.pop_front();
        lock.unlock();
        block();
        // What the block holds goes with it, before the next one and outside the lock.
        block = nullptr;
        lock.lock();
    }
}

}  // namespace skavlo
