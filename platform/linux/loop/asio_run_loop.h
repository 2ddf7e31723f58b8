#pragma once

#include <asio/executor_work_guard.hpp>
#include <asio/io_context.hpp>
#include <functional>
#include <memory>
#include <thread>

#include "platform/run_loop.h"
#include "platform/time.h"

namespace skavlo {

// The overlay's main run loop: one io_context, run by the thread that constructed it.
class AsioRunLoop final : public RunLoop {
  public:
    AsioRunLoop();
    void async(std::function<void()> block) override;
    [[nodiscard]] bool isMainThread() const override;
    std::unique_ptr<Timer> scheduledTimer(double intervalSeconds, bool repeats,
                                          std::function<void()> action) override;

    // Returns after stop(), with its status.
    int run();
    void stop(int status);

    // For the back ends, which wait for their own descriptors here.
    [[nodiscard]] asio::io_context& context() { return context_; }

  private:
    asio::io_context context_{1};
    asio::executor_work_guard<asio::io_context::executor_type> work_;
    std::thread::id mainThread_;
    int status_ = 0;
};

// CLOCK_MONOTONIC.
class MonotonicClock final : public Clock {
  public:
    [[nodiscard]] MachTime mach_absolute_time() const override;
};

}  // namespace skavlo
