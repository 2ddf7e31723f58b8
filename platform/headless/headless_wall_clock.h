#pragma once

#include "platform/headless/headless_run_loop.h"
#include "platform/time.h"

namespace skavlo {

// A time of day that passes with a headless run loop's time, from a date in November 2023.
class HeadlessWallClock final : public WallClock {
  public:
    explicit HeadlessWallClock(const HeadlessRunLoop& runLoop) : runLoop_(runLoop) {}
    [[nodiscard]] double timeIntervalSince1970() const override {
        constexpr double kStart = 1'700'000'000;
        return kStart + static_cast<double>(runLoop_.mach_absolute_time()) /
                            static_cast<double>(kNanosecondsPerSecond);
    }

  private:
    const HeadlessRunLoop& runLoop_;
};

}  // namespace skavlo
