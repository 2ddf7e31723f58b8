// Timing curves of animations. They lie here because overlay and settings application, which know
// nothing of each other, share them.
#pragma once

namespace skavlo {

// A cubic Bezier curve from (0, 0) to (1, 1) with these control points, x within 0 to 1.
struct TimingCurve {
    double x1;
    double y1;
    double x2;
    double y2;
};

inline constexpr TimingCurve kEaseInOut{0.42, 0, 0.58, 1};
inline constexpr TimingCurve kEaseOut{0, 0, 0.58, 1};

// Progress 0 to 1 after `fraction` of the time, which is clamped to 0 to 1. Solves x(t) = fraction
// by bisection, to the last digit: for many values a frame make a table.
constexpr double timingProgress(const TimingCurve& curve, double fraction) {
    const auto bezier = [](double first, double second, double t) {
        const double u = 1 - t;
        return 3 * u * u * t * first + 3 * u * t * t * second + t * t * t;
    };
    if (!(fraction > 0)) return 0;
    if (fraction >= 1) return 1;
    constexpr int kHalvings = 60;
    double low = 0;
    double high = 1;
    for (int i = 0; i < kHalvings; ++i) {
        const double middle = (low + high) / 2;
        (bezier(curve.x1, curve.x2, middle) < fraction ? low : high) = middle;
    }
    return bezier(curve.y1, curve.y2, (low + high) / 2);
}

}  // namespace skavlo
