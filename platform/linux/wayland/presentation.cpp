#include "platform/linux/wayland/presentation.h"

namespace skavlo {

MachTime nextPresentation(const Presented& last, MachTime now) {
    constexpr MachTime kOldest = kNanosecondsPerSecond;
    if (last.time == 0 || last.refresh == 0) return now;
    if (now < last.time) return last.time;
    const MachTime since = now - last.time;
    if (since > kOldest) return now;
    return last.time + (since / last.refresh + 1) * last.refresh;
}

}  // namespace skavlo
