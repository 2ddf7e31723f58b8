#include "platform/headless/headless_run_loop.h"

#include <algorithm>
#include <cmath>
#include <optional>
#include <utility>

namespace skavlo {

class HeadlessRunLoop::HeadlessTimer final : public Timer {
  public:
    HeadlessTimer(HeadlessRunLoop& loop, double seconds, bool repeats, std::function<void()> action)
        : loop_(loop),
          interval_(static_cast<MachTime>(
              std::llround(seconds * static_cast<double>(kNanosecondsPerSecond)))),
          repeats_(repeats),
          action_(std::move(action)),
          due_(loop.now_ + interval_) {
        loop_.timers_.push_back(this);
    }
    ~HeadlessTimer() override { std::erase(loop_.timers_, this); }
    HeadlessTimer(const HeadlessTimer&) = delete;
    HeadlessTimer& operator=(const HeadlessTimer&) = delete;

    void setFireDate(FireDate date) override {
        if (!valid_) return;
        due_ = date == FireDate::now ? std::optional(loop_.now_) : std::nullopt;
    }
    void invalidate() override {
        valid_ = false;
        due_.reset();
    }

    [[nodiscard]] std::optional<MachTime> due() const { return due_; }
    void fire() {
        due_ = repeats_ ? std::optional(*due_ + interval_) : std::nullopt;
        // A copy: the action may destroy this timer.
        const auto action = action_;
        action();
    }

  private:
    HeadlessRunLoop& loop_;
    MachTime interval_;
    bool repeats_;
    bool valid_ = true;
    std::function<void()> action_;
    std::optional<MachTime> due_;
};

HeadlessRunLoop::HeadlessRunLoop() : mainThread_(std::this_thread::get_id()) {}

void HeadlessRunLoop::async(std::function<void()> block) {
    const std::lock_guard lock(mutex_);
    posted_.push_back(std::move(block));
}

bool HeadlessRunLoop::isMainThread() const {
    return std::this_thread::get_id() == mainThread_;
}

std::unique_ptr<Timer> HeadlessRunLoop::scheduledTimer(double intervalSeconds, bool repeats,
                                                       std::function<void()> action) {
    return std::make_unique<HeadlessTimer>(*this, intervalSeconds, repeats, std::move(action));
}

void HeadlessRunLoop::runPosted() {
    while (true) {
        std::function<void()> block;
        {
            const std::lock_guard lock(mutex_);
            if (posted_.empty()) return;
            block = std::move(posted_.front());
            posted_.pop_front();
        }
        block();
    }
}

// The one that is due first; of several, the one that was made first.
HeadlessRunLoop::HeadlessTimer* HeadlessRunLoop::nextTimer() const {
    HeadlessTimer* next = nullptr;
    for (HeadlessTimer* timer : timers_) {
        if (timer->due() && (!next || *timer->due() < *next->due())) next = timer;
    }
    return next;
}

void HeadlessRunLoop::advanceTo(MachTime time) {
    runPosted();
    while (HeadlessTimer* timer = nextTimer()) {
        if (*timer->due() > time) break;
        now_ = std::max(now_, *timer->due());
        timer->fire();
        runPosted();
    }
    now_ = std::max(now_, time);
}

}  // namespace skavlo
