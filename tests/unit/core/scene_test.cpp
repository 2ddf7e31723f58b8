#include <random>
#include <set>

#include "overlay/animation.h"
#include "overlay/tile_mask.h"
#include "overlay_fixture.h"

namespace skavlo {
namespace {

TEST(Curve, BeginsAndEndsExactly) {
    for (const Curve curve : {Curve::easeInOut, Curve::easeOut}) {
        EXPECT_EQ(curveProgress(curve, 0), 0);
        EXPECT_EQ(curveProgress(curve, 1), 1);
        EXPECT_EQ(curveProgress(curve, -1), 0);
        EXPECT_EQ(curveProgress(curve, 2), 1);
        EXPECT_EQ(curveProgress(curve, std::numeric_limits<double>::quiet_NaN()), 0);
    }
}

TEST(Curve, FollowsItsBezier) {
    // Points of the curves, from their parameter t: (x(t), y(t)).
    for (int i = 1; i < 100; ++i) {
        const double t = i / 100.0;
        const double u = 1 - t;
        const double y = 3 * u * t * t + t * t * t;
        const double xOut = 3 * u * t * t * 0.58 + t * t * t;
        const double xInOut = 3 * u * u * t * 0.42 + xOut;
        EXPECT_NEAR(curveProgress(Curve::easeOut, xOut), y, 2e-4) << t;
        EXPECT_NEAR(curveProgress(Curve::easeInOut, xInOut), y, 1e-5) << t;
    }
}

TEST(Animation, WithoutADurationIsOverAtOnce) {
    for (const double seconds : {0.0, -1.0, std::numeric_limits<double>::quiet_NaN()}) {
        const Animation animation{100, seconds, Curve::easeOut, 1, 3};
        EXPECT_EQ(animation.valueAt(100), 3);
        EXPECT_TRUE(animation.finishedAt(0));
    }
}

TEST(Animation, HasItsFirstValueBeforeItStarts) {
    const Animation animation{100, 1, Curve::easeOut, 1, 3};
    EXPECT_EQ(animation.valueAt(50), 1);
    EXPECT_FALSE(animation.finishedAt(50));
}

TEST(TileMask, RectsCoverExactlyTheTilesAndDoNotOverlap) {
    constexpr PixelSize kFrame{200, 130};
    std::minstd_rand random(7);
    for (int round = 0; round < 200; ++round) {
        TileMask mask(kFrame);
        for (int i = 0; i < 5; ++i) {
            const auto pick = [&](int n) { return static_cast<int>(random() % n); };
            mask.add(PixelRect{pick(220) - 10, pick(150) - 10, pick(60), pick(60)});
        }
        std::vector<int> covered(static_cast<std::size_t>(kFrame.width * kFrame.height));
        for (const PixelRect& rect : mask.rects()) {
            ASSERT_GE(rect.x, 0);
            ASSERT_LE(rect.right(), kFrame.width);
            ASSERT_LE(rect.bottom(), kFrame.height);
            for (int y = rect.y; y < rect.bottom(); ++y) {
                for (int x = rect.x; x < rect.right(); ++x) {
                    ++covered[static_cast<std::size_t>(y * kFrame.width + x)];
                }
            }
        }
        for (int y = 0; y < kFrame.height; ++y) {
            for (int x = 0; x < kFrame.width; ++x) {
                const int expected = mask.touchesAny({x, y, 1, 1}) ? 1 : 0;
                ASSERT_EQ(covered[static_cast<std::size_t>(y * kFrame.width + x)], expected);
            }
        }
    }
}

TEST(TileMask, CoversAllOnlyWhenEveryTileOfTheVisiblePartIsSet) {
    constexpr int kSide = 2 * TileMask::kTile;
    TileMask mask({100, 100});
    mask.add(PixelRect{0, 0, kSide - 1, kSide - 1});
    EXPECT_TRUE(mask.coversAll({10, 10, kSide - 10, kSide - 10}));
    EXPECT_FALSE(mask.coversAll({10, 10, kSide - 9, kSide - 10}));
    EXPECT_TRUE(mask.coversAll({-50, -50, 60, 60}));
    EXPECT_TRUE(mask.coversAll({500, 500, 10, 10}));
    EXPECT_FALSE(mask.touchesAny({500, 500, 10, 10}));
}

TEST(TileMask, KeepsWhatIsInTheOtherAsWell) {
    TileMask mask({100, 100});
    mask.add(PixelRect{0, 0, 50, 50});
    TileMask other({100, 100});
    other.add(PixelRect{TileMask::kTile, 0, 100, 1});
    mask.keep(other);
    EXPECT_TRUE(mask.coversAll({TileMask::kTile, 0, 50 - TileMask::kTile, TileMask::kTile}));
    EXPECT_FALSE(mask.touchesAny({0, 0, TileMask::kTile, 100}));
    EXPECT_FALSE(mask.touchesAny({0, TileMask::kTile, 100, 100}));
}

TEST(DamageHistory, ABufferOfAgeNGetsTheChangesOfTheLastNFrames) {
    constexpr PixelSize kFrame{320, 32};
    const auto tile = [&](int i) {
        TileMask mask(kFrame);
        mask.add(PixelRect{i * TileMask::kTile, 0, 1, 1});
        return mask;
    };
    DamageHistory history;
    history.reset(kFrame);
    history.push(tile(0), 1);
    history.push(tile(1), 1);
    const TileMask& result = history.push(tile(2), 2);
    EXPECT_FALSE(result.touchesAny({0, 0, 1, 1}));
    EXPECT_TRUE(result.touchesAny({TileMask::kTile, 0, 1, 1}));
    EXPECT_TRUE(result.touchesAny({2 * TileMask::kTile, 0, 1, 1}));
    EXPECT_FALSE(result.touchesAny({3 * TileMask::kTile, 0, 1, 1}));
}

TEST(DamageHistory, ABufferOfUnknownAgeGetsEverything) {
    DamageHistory history;
    history.reset({320, 32});
    EXPECT_TRUE(history.push(TileMask({320, 32}), 0).coversAll({0, 0, 320, 32}));
    EXPECT_TRUE(history.push(TileMask({320, 32}), 9).coversAll({0, 0, 320, 32}));
    EXPECT_TRUE(history.push(TileMask({320, 32}), 1).empty());
}

class ScenePainting : public OverlayFixture {
  protected:
    // The scene as it is now, everything in order, onto an empty screen.
    std::vector<std::uint32_t> drawnInOrder() {
        const PixelSize size = screen.pixels();
        std::vector<std::uint32_t> pixels(windowServer.pixels().size());
        const RenderTarget target{pixels.data(), size.width, size};
        for (const Generation& generation : scene().generations()) {
            const Look& look = *generation.look;
            const auto& circle = std::get<CircleLook>(look.shape);
            const CircleStyle style{look.size * screen.scale(), circle.borderWidth * screen.scale(),
                                    circle.fill, circle.border};
            const auto draw = [&](Point centre, double scale, double opacity) {
                const Instance instance{static_cast<float>(centre.x * screen.scale()),
                                        static_cast<float>(centre.y * screen.scale()),
                                        static_cast<float>(scale),
                                        static_cast<float>(look.opacity * opacity)};
                drawCircles(target, {0, 0, size.width, size.height}, style,
                            std::span(&instance, 1));
            };
            for (const TrailCopy& copy : generation.copies) {
                const TrailState state = trailState(copy, generation.trailSeconds, lastRefresh);
                draw(copy.centre, state.scale, state.opacity);
            }
            if (generation.hasMarker) {
                draw(generation.centre, generation.scale.valueAt(lastRefresh),
                     generation.opacity.valueAt(lastRefresh));
            }
        }
        return pixels;
    }
    MachTime lastRefresh = 0;
};

TEST_F(ScenePainting, FramesDrawnByDamageEqualFramesDrawnInOrder) {
    launch();
    std::minstd_rand random(3);
    const auto pick = [&](int n) { return static_cast<double>(random() % n); };
    for (int step = 0; step < 300; ++step) {
        const auto finger = static_cast<FingerId>(1 + random() % 5);
        if (random() % 4 == 0) {
            canvas().skv_liftTouch(finger);
        } else {
            canvas().skv_handleTouch(finger, {pick(390), pick(844)});
        }
        advance(1.0 / 60);
        windowServer.refresh();
        lastRefresh = loop.mach_absolute_time();
        loop.runPosted();
        if (scene().animating(lastRefresh)) {
            ASSERT_EQ(windowServer.pixels(), drawnInOrder()) << "step " << step;
        }
    }
}

TEST_F(ScenePainting, FramesDrawnIntoTwoBuffersOfAnyAgeEqualFramesDrawnInOrder) {
    launch();
    std::minstd_rand random(5);
    const auto pick = [&](int n) { return static_cast<double>(random() % n); };
    const PixelSize size = screen.pixels();
    std::vector<std::uint32_t> buffers[2] = {
        std::vector<std::uint32_t>(windowServer.pixels().size()),
        std::vector<std::uint32_t>(windowServer.pixels().size())};
    int lastFrame[2] = {0, 0};
    ScenePainter painter;
    int frames = 0;
    for (int step = 0; step < 300; ++step) {
        const auto finger = static_cast<FingerId>(1 + random() % 3);
        if (random() % 3 == 0) {
            canvas().skv_liftTouch(finger);
        } else if (random() % 2 == 0) {
            canvas().skv_handleTouch(finger, {pick(390), pick(844)});
        }
        lastRefresh = loop.mach_absolute_time();
        scene().expire(lastRefresh);
        const std::size_t slot = random() % 2;
        const Frame frame{buffers[slot].data(), size.width, size, frames + 1 - lastFrame[slot]};
        if (painter.paint(scene(), frame, screen.scale(), lastRefresh).empty()) continue;
        lastFrame[slot] = ++frames;
        ASSERT_EQ(buffers[slot], drawnInOrder()) << "step " << step;
        if (random() % 2 == 0) advance(0.1);
    }
    EXPECT_GT(frames, 100);
}

TEST_F(ScenePainting, TrailsThatCrossBetweenTwoRefreshesKeepTheirOrder) {
    launch();
    canvas().skv_handleTouch(1, {60, 200});
    canvas().skv_handleTouch(2, {200, 60});
    advance(0.2);
    lastRefresh = loop.mach_absolute_time();
    std::vector<std::uint32_t> pixels(windowServer.pixels().size());
    const Frame frame{pixels.data(), screen.pixels().width, screen.pixels(), 1};
    ScenePainter painter;
    for (int step = 0; step < 14; ++step) {
        const double along = 60 + 20.0 * step;
        canvas().skv_handleTouch(2, {200, along});
        painter.paint(scene(), frame, screen.scale(), lastRefresh);
        ASSERT_EQ(pixels, drawnInOrder()) << "downwards, " << along;
    }
    for (int step = 0; step < 14; ++step) {
        const double along = 60 + 20.0 * step;
        canvas().skv_handleTouch(1, {along, 200});
        painter.paint(scene(), frame, screen.scale(), lastRefresh);
        ASSERT_EQ(pixels, drawnInOrder()) << "across, " << along;
    }
    EXPECT_GT(scene().generations()[0].copies.size(), 5U);
    EXPECT_GT(scene().generations()[1].copies.size(), 5U);
}

TEST_F(ScenePainting, AMarkerIsCentredOnItsTouchAtEveryScale) {
    for (const double scale : {1.0, 1.5, 2.0}) {
        windowServer.resize();
        screen = HeadlessScreen({780, 780}, scale);
        writeSettings({{"colorTracking", false}, {"colorBorderWidth", 0}});
        launch();
        canvas().skv_handleTouch(1, {100.3, 150.7});
        play(0.3);
        double sum = 0;
        double x = 0;
        double y = 0;
        for (std::size_t i = 0; i < windowServer.pixels().size(); ++i) {
            const double alpha = windowServer.pixels()[i] >> 24U;
            const std::size_t column = i % 780;
            const std::size_t row = i / 780;
            sum += alpha;
            x += alpha * (static_cast<double>(column) + 0.5);
            y += alpha * (static_cast<double>(row) + 0.5);
        }
        ASSERT_GT(sum, 0);
        EXPECT_NEAR(x / sum, 100.3 * scale, 0.05);
        EXPECT_NEAR(y / sum, 150.7 * scale, 0.05);
    }
}

class Frames : public OverlayFixture {};

TEST_F(Frames, ATouchIsDrawnAtOnceWithoutWaitingForTheDisplay) {
    launch();
    const int before = windowServer.frames();
    deliver(parent(1, {child(1, 1)}));
    EXPECT_EQ(windowServer.frames(), before + 1);
    EXPECT_NE(windowServer.pixels()[100 * 390 + 100], 0U);
}

TEST_F(Frames, ManyTouchesWhileTheServerStillReadsMakeOneFrame) {
    launch();
    windowServer.holdFrames(true);
    const int before = windowServer.frames();
    for (int i = 0; i < 20; ++i) deliver(parent(1, {child(1, 1, 100 + i, 100)}));
    EXPECT_EQ(windowServer.frames(), before);
    windowServer.holdFrames(false);
    EXPECT_EQ(windowServer.frames(), before + 1);
}

TEST_F(Frames, TouchesThatNothingShowsAreForgottenOnceTheyWouldHaveFaded) {
    writeSettings({{"colorTracking", true}});
    launch();
    windowServer.holdFrames(true);  // as without any output
    for (int i = 0; i < 100; ++i) {
        for (const double y : {100, 200, 300}) deliver(parent(1, {child(1, 1, 100, y)}));
        deliver(parent(0, {child(1, 0)}));
        advance(1);
    }
    EXPECT_LE(scene().generations().size(), 1U);
    EXPECT_LE(copies(), 3U);
}

TEST_F(Frames, WithNothingMovingAndNothingTouchingNoFrameIsAsked) {
    launch();
    deliver(parent(1, {child(1, 1)}));
    EXPECT_TRUE(windowServer.refreshRequested());
    deliver(parent(0, {child(1, 0)}));
    play(2);
    EXPECT_FALSE(windowServer.refreshRequested());
    const int before = windowServer.frames();
    advance(2);  // not yet time for the heartbeat
    EXPECT_EQ(windowServer.frames(), before);
    for (const std::uint32_t pixel : windowServer.pixels()) ASSERT_EQ(pixel, 0U);
}

TEST_F(Frames, AFingerThatRestsAsksForNoFrame) {
    launch();
    deliver(parent(1, {child(1, 1)}));
    play(2);
    EXPECT_FALSE(windowServer.refreshRequested());
    deliver(parent(1, {child(1, 1)}));
    const int before = windowServer.frames();
    advance(1);
    EXPECT_EQ(windowServer.frames(), before);
}

TEST_F(Frames, ATouchBetweenTwoRefreshesRedrawsOnlyWhatItChanged) {
    writeSettings({{"colorTracking", true}});
    launch();
    deliver(parent(1, {child(1, 1, 50, 50)}));
    deliver(parent(1, {child(1, 1, 50, 50), child(2, 1, 300, 700)}));
    advance(0.005);
    deliver(parent(1, {child(1, 1, 53, 50), child(2, 1, 300, 700)}));
    for (const PixelRect& rect : windowServer.lastDamage()) EXPECT_LT(rect.bottom(), 200);
}

TEST_F(Frames, AResizedScreenIsDrawnWhole) {
    launch();
    deliver(parent(1, {child(1, 1, 100, 100)}));
    play(0.7);
    screen.setPixels({844, 390});
    windowServer.resize();
    loop.runPosted();
    EXPECT_NE(windowServer.pixels()[100 * 844 + 100], 0U);
}

}  // namespace
}  // namespace skavlo
