#pragma once

#include <deque>
#include <functional>
#include <mutex>
#include <thread>
#include <vector>

#include "platform/run_loop.h"
#include "platform/time.h"

namespace skavlo {

// A main loop whose time passes only when it is told to: what it runs is the same every time.
class HeadlessRunLoop final : public RunLoop, public Clock {
  public:
    HeadlessRunLoop();

    void async(std::function<void()> block) override;
    [[nodiscard]] bool isMainThread() const override;
    std::unique_ptr<Timer> scheduledTimer(double intervalSeconds, bool repeats,
                                          std::function<void()> action) override;
    [[nodiscard]] MachTime mach_absolute_time() const override { return now_; }

    // Runs what has been posted, and what that posts, without any time passing.
    void runPosted();
    // Runs everything that is due up to this time, in order of time, and leaves the clock there.
    void advanceTo(MachTime time);

  private:
    class HeadlessTimer;
    friend class HeadlessTimer;
    [[nodiscard]] HeadlessTimer* nextTimer() const;

    std::thread::id mainThread_;
    MachTime now_ = kNanosecondsPerSecond;  // not 0, so that nothing mistakes it for "never"
    std::mutex mutex_;                      // guards posted_
    std::deque<std::function<void()>> posted_;
    std::vector<HeadlessTimer*> timers_;
};

}  // namespace skavlo
