#pragma once

namespace skavlo {

// What the launch splash shows at a moment.
struct SplashFrame {
    double iconScale = 0;
    double iconAlpha = 0;
    double splashAlpha = 1;
    double contentAlpha = 0;  // of the settings screen below
    bool removed = false;     // the splash is gone for good
};

inline constexpr double kSplashSeconds = 1.25;

// `time`: seconds since launch. The icon springs in (0.1 to 0.6), rests, and zooms out while the
// screen fades in (0.85 to 1.25).
//
// The spring is the damped oscillator x'' + 2 z w x' + w^2 (x - 1) = 0 with x(0) = 0, x'(0) = 0.8
// per second and the damping ratio z = 0.6:
//     x(t) = 1 - exp(-z w t) (cos(d t) + (z w - 0.8) / d sin(d t)),  d = w sqrt(1 - z^2).
// Its natural frequency w is such that the envelope exp(-z w t) has decayed to 1/1000 at its end.
// The scale follows the overshoot; the alpha is clamped to 0 to 1.
SplashFrame splashFrame(double time);

}  // namespace skavlo
