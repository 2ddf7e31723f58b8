#pragma once

#include <cstdint>

#include "platform/time.h"

namespace skavlo {

// The X server stamps events with the low 32 bits of the monotonic clock's milliseconds. Returns
// the end of that millisecond, so that an event is never taken for older than it is, but nothing
// later than `now`. Holds for events up to 24 days old from a server on the same machine.
constexpr MachTime serverTimeToMachTime(std::uint32_t milliseconds, MachTime now) {
    constexpr MachTime kPerMillisecond = 1'000'000;
    const MachTime nowMilliseconds = now / kPerMillisecond;
    const auto age =
        static_cast<std::int32_t>(static_cast<std::uint32_t>(nowMilliseconds) - milliseconds);
    if (age <= 0 || static_cast<MachTime>(age) > nowMilliseconds) return now;
    return (nowMilliseconds - static_cast<MachTime>(age) + 1) * kPerMillisecond - 1;
}

}  // namespace skavlo
