#include "ui/splash.h"

#include <gtest/gtest.h>

#include <cmath>

namespace skavlo {
namespace {

constexpr double kTiny = 1e-9;

TEST(Splash, BeginsWithASmallTransparentIconOverAHiddenScreen) {
    for (const double time : {-1.0, 0.0, 0.1}) {
        const SplashFrame frame = splashFrame(time);
        EXPECT_DOUBLE_EQ(frame.iconScale, 0.8);
        EXPECT_DOUBLE_EQ(frame.iconAlpha, 0);
        EXPECT_DOUBLE_EQ(frame.splashAlpha, 1);
        EXPECT_DOUBLE_EQ(frame.contentAlpha, 0);
        EXPECT_FALSE(frame.removed);
    }
}

TEST(Splash, RestsBetweenSpringAndZoom) {
    for (const double time : {0.6, 0.7, 0.85}) {
        const SplashFrame frame = splashFrame(time);
        EXPECT_NEAR(frame.iconScale, 1, kTiny);
        EXPECT_NEAR(frame.iconAlpha, 1, kTiny);
        EXPECT_NEAR(frame.splashAlpha, 1, kTiny);
        EXPECT_NEAR(frame.contentAlpha, 0, kTiny);
    }
}

TEST(Splash, EndsWithTheScreenShownAndTheSplashGone) {
    for (const double time : {1.25, 100.0}) {
        const SplashFrame frame = splashFrame(time);
        EXPECT_NEAR(frame.iconScale, 3, kTiny);
        EXPECT_NEAR(frame.iconAlpha, 0, kTiny);
        EXPECT_NEAR(frame.splashAlpha, 0, kTiny);
        EXPECT_NEAR(frame.contentAlpha, 1, kTiny);
        EXPECT_TRUE(frame.removed);
    }
    EXPECT_FALSE(splashFrame(1.2499).removed);
}

// Against the oscillator itself, integrated in small steps.
TEST(Splash, TheIconFollowsADampedSpring) {
    constexpr double kDamping = 0.6;
    const double frequency = std::log(1000.0) / 0.5 / kDamping;
    constexpr double kStep = 1e-7;
    double place = 0;
    double speed = 0.8;
    for (int i = 0; i < 4'990'000; ++i) {
        if (i % 500'000 == 0) {
            const SplashFrame frame = splashFrame(0.1 + i * kStep);
            EXPECT_NEAR(frame.iconScale, 0.8 + 0.2 * place, 1e-5) << i;
            EXPECT_NEAR(frame.iconAlpha, std::fmin(std::fmax(place, 0), 1), 1e-5) << i;
        }
        // The midpoint rule.
        const double middle = place + speed * kStep / 2;
        const double force =
            -2 * kDamping * frequency * speed - frequency * frequency * (middle - 1);
        place = middle + (speed + force * kStep) * kStep / 2;
        speed += force * kStep;
    }
}

TEST(Splash, TheScaleOvershootsAndTheAlphaDoesNot) {
    double largest = 0;
    for (double time = 0; time < 0.85; time += 0.001) {
        const SplashFrame frame = splashFrame(time);
        largest = std::fmax(largest, frame.iconScale);
        EXPECT_GE(frame.iconAlpha, 0);
        EXPECT_LE(frame.iconAlpha, 1);
    }
    // exp(-pi z / sqrt(1 - z^2)) of the distance for a spring at rest, a little more with a push.
    EXPECT_GT(largest, 1 + 0.2 * std::exp(-0.75 * M_PI));
    EXPECT_LT(largest, 1.025);
}

TEST(Splash, TheSpringHasAllButSettledWhenItEnds) {
    EXPECT_NEAR(splashFrame(0.6 - 1e-6).iconScale, 1, 0.2 * 2e-3);
}

TEST(Splash, TheZoomEasesInAndOut) {
    const SplashFrame half = splashFrame(1.05);
    EXPECT_NEAR(half.iconScale, 2, kTiny);
    EXPECT_NEAR(half.iconAlpha, 0.5, kTiny);
    EXPECT_NEAR(half.splashAlpha, 0.5, kTiny);
    EXPECT_NEAR(half.contentAlpha, 0.5, kTiny);
    // A quarter of the time: the curve of (0.42, 0) and (0.58, 1).
    EXPECT_NEAR(splashFrame(0.95).contentAlpha, 0.129161931, 1e-8);
    EXPECT_NEAR(splashFrame(1.15).contentAlpha, 1 - 0.129161931, 1e-8);
}

}  // namespace
}  // namespace skavlo
