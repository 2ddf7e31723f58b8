#pragma once

#include <functional>
#include <memory>

namespace skavlo {

enum class FireDate { now, distantFuture };

// Seconds between two firings; invalidated when destroyed.
class Timer {
  public:
    virtual ~Timer() = default;
    // now: fires at once, then goes on at its interval. distantFuture: parked until set again.
    virtual void setFireDate(FireDate date) = 0;
    virtual void invalidate() = 0;
};

// The main thread's loop and its queue, in order of posting.
class RunLoop {
  public:
    virtual ~RunLoop() = default;
    // From any thread: runs the block on the main thread after what was posted before.
    virtual void async(std::function<void()> block) = 0;
    [[nodiscard]] virtual bool isMainThread() const = 0;
    // First fires one interval from now; main thread only.
    virtual std::unique_ptr<Timer> scheduledTimer(double intervalSeconds, bool repeats,
                                                  std::function<void()> action) = 0;
};

}  // namespace skavlo
