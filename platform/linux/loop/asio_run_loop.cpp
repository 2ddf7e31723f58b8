#include "platform/linux/loop/asio_run_loop.h"

#include <time.h>

#include <asio/post.hpp>
#include <asio/steady_timer.hpp>
#include <chrono>
#include <utility>

namespace skavlo {

namespace {

// The waiting operation holds the state too, so a timer may be destroyed by its own action.
struct TimerState : std::enable_shared_from_this<TimerState> {
    TimerState(asio::io_context& context, double seconds, bool repeat, std::function<void()> act)
        : timer(context),
          interval(std::chrono::duration_cast<std::chrono::steady_clock::duration>(
              std::chrono::duration<double>(seconds))),
          repeats(repeat),
          action(std::move(act)) {}

    // What was waited for before counts no more, even if it is due and waits for its turn, where
    // cancelling no longer reaches it.
    void cancel() {
        ++waits;
        timer.cancel();
    }

    void wait(std::chrono::steady_clock::time_point due) {
        timer.expires_at(due);
        timer.async_wait(
            [self = shared_from_this(), due, mine = ++waits](const asio::error_code& error) {
                if (error || mine != self->waits) return;
                if (self->repeats) self->wait(due + self->interval);
                self->action();
            });
    }

    asio::steady_timer timer;
    std::chrono::steady_clock::duration interval;
    bool repeats;
    bool valid = true;
    unsigned waits = 0;
    std::function<void()> action;
};

class AsioTimer final : public Timer {
  public:
    explicit AsioTimer(std::shared_ptr<TimerState> state) : state_(std::move(state)) {
        state_->wait(std::chrono::steady_clock::now() + state_->interval);
    }
    ~AsioTimer() override { invalidate(); }
    AsioTimer(const AsioTimer&) = delete;
    AsioTimer& operator=(const AsioTimer&) = delete;

    void setFireDate(FireDate date) override {
        if (!state_->valid) return;
        state_->cancel();
        if (date == FireDate::now) state_->wait(std::chrono::steady_clock::now());
    }

    void invalidate() override {
        state_->valid = false;
        state_->cancel();
    }

  private:
    std::shared_ptr<TimerState> state_;
};

}  // namespace

AsioRunLoop::AsioRunLoop()
    : work_(context_.get_executor()), mainThread_(std::this_thread::get_id()) {}

void AsioRunLoop::async(std::function<void()> block) {
    asio::post(context_, std::move(block));
}

bool AsioRunLoop::isMainThread() const {
    return std::this_thread::get_id() == mainThread_;
}

std::unique_ptr<Timer> AsioRunLoop::scheduledTimer(double intervalSeconds, bool repeats,
                                                   std::function<void()> action) {
    return std::make_unique<AsioTimer>(
        std::make_shared<TimerState>(context_, intervalSeconds, repeats, std::move(action)));
}

int AsioRunLoop::run() {
    context_.run();
    return status_;
}

void AsioRunLoop::stop(int status) {
    status_ = status;
    context_.stop();
}

MachTime MonotonicClock::mach_absolute_time() const {
    timespec now{};
    clock_gettime(CLOCK_MONOTONIC, &now);
    return static_cast<MachTime>(now.tv_sec) * kNanosecondsPerSecond +
           static_cast<MachTime>(now.tv_nsec);
}

}  // namespace skavlo
