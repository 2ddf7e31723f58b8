#include "platform/linux/input/sleep_watch.h"

#include <sys/timerfd.h>
#include <time.h>
#include <unistd.h>

#include <cstdint>
#include <limits>
#include <utility>

namespace skavlo {

namespace {

std::chrono::nanoseconds read(clockid_t clock) {
    timespec now{};
    clock_gettime(clock, &now);
    return std::chrono::seconds(now.tv_sec) + std::chrono::nanoseconds(now.tv_nsec);
}

}  // namespace

// One clock goes on during a sleep, the other stands.
std::chrono::nanoseconds SleepWatch::sleptSoFar() {
    return read(CLOCK_BOOTTIME) - read(CLOCK_MONOTONIC);
}

int SleepWatch::openClockJumps() {
    const int descriptor = timerfd_create(CLOCK_REALTIME, TFD_NONBLOCK | TFD_CLOEXEC);
    itimerspec never{};
    never.it_value.tv_sec = std::numeric_limits<time_t>::max();
    constexpr int kFlags = TFD_TIMER_ABSTIME | TFD_TIMER_CANCEL_ON_SET;
    if (descriptor >= 0 && timerfd_settime(descriptor, kFlags, &never, nullptr) != 0) {
        close(descriptor);
        return -1;
    }
    return descriptor;
}

SleepWatch::SleepWatch(asio::io_context& context, int clockJumps, SleptSoFar slept,
                       std::function<void()> woke)
    : clockJumps_(clockJumps), slept_(std::move(slept)), woke_(std::move(woke)), known_(slept_()) {
    if (clockJumps_ >= 0)
        watch_ = std::make_unique<DescriptorWatch>(context, clockJumps_, [this] { clockJumped(); });
}

SleepWatch::~SleepWatch() {
    watch_.reset();
    if (clockJumps_ >= 0) close(clockJumps_);
}

void SleepWatch::clockJumped() {
    // The two clocks are not read at the same moment.
    constexpr std::chrono::milliseconds kLeast{10};
    std::uint64_t ignored = 0;
    // Takes the notice; fails with ECANCELED, which says just that.
    [[maybe_unused]] const ssize_t taken = ::read(clockJumps_, &ignored, sizeof ignored);
    const std::chrono::nanoseconds slept = slept_();
    if (slept - known_ < kLeast) return;  // someone has set the clock
    known_ = slept;
    woke_();
}

}  // namespace skavlo
