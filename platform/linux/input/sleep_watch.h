#pragma once

#include <chrono>
#include <functional>
#include <memory>

#include "platform/linux/loop/descriptor_watch.h"

namespace skavlo {

// Tells that the machine has slept. The kernel lifts keys before it sleeps but no fingers, and what
// happens on the screen meanwhile nobody reports.
class SleepWatch {
  public:
    // How long the machine has slept since it was started.
    using SleptSoFar = std::function<std::chrono::nanoseconds()>;
    static std::chrono::nanoseconds sleptSoFar();

    // A descriptor that becomes readable when the wall clock jumps, as it does over a sleep;
    // negative when the kernel has none. Costs no wake-up otherwise.
    static int openClockJumps();

    // Takes over the descriptor; with a negative one it never calls.
    SleepWatch(asio::io_context& context, int clockJumps, SleptSoFar slept,
               std::function<void()> woke);
    ~SleepWatch();
    SleepWatch(const SleepWatch&) = delete;
    SleepWatch& operator=(const SleepWatch&) = delete;

  private:
    void clockJumped();

    int clockJumps_;
    SleptSoFar slept_;
    std::function<void()> woke_;
    std::chrono::nanoseconds known_;
    std::unique_ptr<DescriptorWatch> watch_;
};

}  // namespace skavlo
