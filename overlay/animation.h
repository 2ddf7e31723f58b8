// Animations as closed forms of time: nothing is updated while they run.
#pragma once

#include <algorithm>

#include "platform/time.h"

namespace skavlo {

enum class Curve { easeInOut, easeOut };

// Progress 0 to 1 of the cubic Bezier timing curve with the control points (0.42, 0), (0.58, 1)
// for ease-in-out and (0, 0), (0.58, 1) for ease-out; `fraction` of the time is clamped to 0 to 1.
double curveProgress(Curve curve, double fraction);

// Share of the duration that has passed, 0 to 1. A duration that is not positive is over at once.
inline double elapsedFraction(MachTime start, double seconds, MachTime now) {
    if (!(seconds > 0)) return 1;
    if (now <= start) return 0;
    const double passed =
        static_cast<double>(now - start) / static_cast<double>(kNanosecondsPerSecond);
    return std::min(1.0, passed / seconds);
}

struct Animation {
    MachTime start = 0;
    double seconds = 0;
    Curve curve = Curve::easeInOut;
    double from = 0;
    double to = 0;

    static Animation constant(double value) { return {.from = value, .to = value}; }

    [[nodiscard]] double valueAt(MachTime now) const {
        return from + (to - from) * curveProgress(curve, elapsedFraction(start, seconds, now));
    }
    [[nodiscard]] bool finishedAt(MachTime now) const {
        return elapsedFraction(start, seconds, now) >= 1;
    }
};

}  // namespace skavlo
