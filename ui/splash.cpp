#include "ui/splash.h"

#include <algorithm>
#include <cmath>

#include "platform/timing_curve.h"

namespace skavlo {

namespace {

constexpr double kSpringStart = 0.1;
constexpr double kSpringSeconds = 0.5;
constexpr double kDampingRatio = 0.6;
constexpr double kInitialVelocity = 0.8;  // distances per second
constexpr double kRest = 1e-3;            // of the envelope, at the spring's end
constexpr double kZoomStart = 0.85;
constexpr double kZoomSeconds = 0.4;
constexpr double kStartScale = 0.8;
constexpr double kEndScale = 3;

double springProgress(double seconds) {
    if (!(seconds > 0)) return 0;
    if (seconds >= kSpringSeconds) return 1;
    static const double decay = -std::log(kRest) / kSpringSeconds;
    static const double frequency =
        decay / kDampingRatio * std::sqrt(1 - kDampingRatio * kDampingRatio);
    const double phase = frequency * seconds;
    return 1 - std::exp(-decay * seconds) *
                   (std::cos(phase) + (decay - kInitialVelocity) / frequency * std::sin(phase));
}

}  // namespace

SplashFrame splashFrame(double time) {
    const double spring = springProgress(time - kSpringStart);
    const double zoom = timingProgress(kEaseInOut, (time - kZoomStart) / kZoomSeconds);
    SplashFrame frame;
    frame.iconScale = kStartScale + (1 - kStartScale) * spring + (kEndScale - 1) * zoom;
    frame.iconAlpha = std::clamp(spring, 0.0, 1.0) * (1 - zoom);
    frame.splashAlpha = 1 - zoom;
    frame.contentAlpha = zoom;
    frame.removed = time >= kSplashSeconds;
    return frame;
}

}  // namespace skavlo
