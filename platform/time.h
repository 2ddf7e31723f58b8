#pragma once

#include <cstdint>

namespace skavlo {

// Nanoseconds of the monotonic clock that also stamps input events.
using MachTime = std::uint64_t;

inline constexpr MachTime kNanosecondsPerSecond = 1'000'000'000;

class Clock {
  public:
    virtual ~Clock() = default;
    [[nodiscard]] virtual MachTime mach_absolute_time() const = 0;
};

// Time of day.
class WallClock {
  public:
    virtual ~WallClock() = default;
    [[nodiscard]] virtual double timeIntervalSince1970() const = 0;  // seconds
};

}  // namespace skavlo
