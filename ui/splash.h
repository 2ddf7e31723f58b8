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
SplashFrame splashFrame(double time);

}  // namespace skavlo
