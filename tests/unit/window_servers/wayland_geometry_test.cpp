#include "platform/linux/wayland/geometry.h"

#include <gtest/gtest.h>
#include <wayland-client-protocol.h>

#include <cmath>
#include <string>
#include <utility>

#include "platform/linux/input/mapping.h"
#include "platform/linux/wayland/presentation.h"

namespace skavlo {
namespace {

struct SizeCase {
    const char* name;
    WaylandOutputSize output;
    std::optional<std::uint32_t> preferred;
    bool viewport;
    PixelSize points;
    double scale;
    PixelSize buffer;
};

void PrintTo(const SizeCase& one, std::ostream* out) {
    *out << one.name;
}

class WaylandSizes : public testing::TestWithParam<SizeCase> {};

TEST_P(WaylandSizes, GiveTheBufferThePixelsOfTheOutput) {
    const SizeCase& one = GetParam();
    EXPECT_EQ(logicalSize(one.output), one.points);
    const double scale = surfaceScale(one.output, one.preferred, one.viewport);
    EXPECT_NEAR(scale, one.scale, 1e-9);
    EXPECT_EQ(bufferSize(one.points, scale), one.buffer);
}

constexpr PixelSize kFullHd{1920, 1080};
INSTANTIATE_TEST_SUITE_P(
    Of, WaylandSizes,
    testing::Values(
        SizeCase{"Plain", {.mode = kFullHd}, {}, true, kFullHd, 1, kFullHd},
        SizeCase{
            "Turned", {.mode = kFullHd, .transform = 1}, {}, true, {1080, 1920}, 1, {1080, 1920}},
        SizeCase{"UpsideDown", {.mode = kFullHd, .transform = 2}, {}, true, kFullHd, 1, kFullHd},
        SizeCase{"Two", {.mode = kFullHd, .integerScale = 2}, {}, true, {960, 540}, 2, kFullHd},
        SizeCase{"TwoWithoutViewport",
                 {.mode = kFullHd, .integerScale = 2},
                 {},
                 false,
                 {960, 540},
                 2,
                 kFullHd},
        // Three halves, which the compositor can only announce as 2.
        SizeCase{"ByTheLogicalSize",
                 {.mode = kFullHd, .integerScale = 2, .logical = {1280, 720}},
                 {},
                 true,
                 {1280, 720},
                 1.5,
                 kFullHd},
        SizeCase{"ByPreference",
                 {.mode = kFullHd, .integerScale = 2, .logical = {1280, 720}},
                 180U,
                 true,
                 {1280, 720},
                 1.5,
                 kFullHd},
        SizeCase{"RoundedLogicalSize",
                 {.mode = {1366, 768}, .integerScale = 2, .logical = {1093, 614}},
                 150U,
                 true,
                 {1093, 614},
                 1.25,
                 {1366, 768}},
        SizeCase{"TurnedAndScaled",
                 {.mode = kFullHd, .transform = 3, .integerScale = 2, .logical = {864, 1536}},
                 {},
                 true,
                 {864, 1536},
                 1.25,
                 {1080, 1920}},
        SizeCase{"WithoutViewportWholeScalesOnly",
                 {.mode = kFullHd, .integerScale = 2, .logical = {1280, 720}},
                 180U,
                 false,
                 {1280, 720},
                 2,
                 {2560, 1440}}),
    [](const auto& suite) { return std::string(suite.param.name); });

TEST(WaylandSizes, NothingKnownIsNoCrash) {
    EXPECT_EQ(surfaceScale({}, 0U, true), 1);
    EXPECT_EQ(surfaceScale({.integerScale = 0}, {}, false), 1);
    EXPECT_EQ(bufferSize({0, 0}, 1), (PixelSize{1, 1}));
}

TEST(WaylandTransform, IsATurnAndAMirror) {
    using T = std::pair<std::int32_t, OutputTurn>;
    for (const auto& [transform, turn] :
         {T{WL_OUTPUT_TRANSFORM_NORMAL, {Rotation::normal, false}},
          T{WL_OUTPUT_TRANSFORM_90, {Rotation::left, false}},
          T{WL_OUTPUT_TRANSFORM_180, {Rotation::inverted, false}},
          T{WL_OUTPUT_TRANSFORM_270, {Rotation::right, false}},
          T{WL_OUTPUT_TRANSFORM_FLIPPED, {Rotation::normal, true}},
          T{WL_OUTPUT_TRANSFORM_FLIPPED_90, {Rotation::left, true}},
          T{WL_OUTPUT_TRANSFORM_FLIPPED_180, {Rotation::inverted, true}},
          T{WL_OUTPUT_TRANSFORM_FLIPPED_270, {Rotation::right, true}}, T{-1, {}}, T{8, {}}}) {
        EXPECT_EQ(turnOfTransform(transform), turn) << transform;
    }
}

// A panel of 1920 x 1080 with two thirds of it in points, right of another output.
TEST(WaylandTouches, LieUnderTheFingerInEveryTurn) {
    struct Case {
        std::int32_t transform;
        Point panel;   // as a fraction of the panel
        Point points;  // in the picture it shows
    };
    for (const Case& one : {Case{0, {0.25, 0.1}, {320, 72}}, Case{1, {0.25, 0.1}, {648, 320}},
                            Case{2, {0.25, 0.1}, {960, 648}}, Case{3, {0.25, 0.1}, {72, 960}},
                            Case{4, {0.25, 0.1}, {960, 72}}, Case{5, {0.25, 0.1}, {72, 320}}}) {
        const WaylandOutputSize size{
            .mode = kFullHd,
            .transform = one.transform,
            .logical = one.transform % 2 == 0 ? PixelSize{1280, 720} : PixelSize{720, 1280}};
        const PixelSize points = logicalSize(size);
        const OutputTurn turn = turnOfTransform(one.transform);
        OutputLayout layout;
        layout.outputs = {{.name = "DP-1", .rect = {0, 0, 500, 500}},
                          {.name = "eDP-1",
                           .rect = {500, 0, points.width, points.height},
                           .rotation = turn.rotation,
                           .reflectX = turn.reflectX,
                           .internal = true}};
        layout.desktop = {500 + points.width, points.height};
        layout.main = chooseMainOutput(layout.outputs, "");
        const Point got = deviceToPoints(layout, {}).apply(one.panel);
        EXPECT_NEAR(got.x, one.points.x, 1e-9) << one.transform;
        EXPECT_NEAR(got.y, one.points.y, 1e-9) << one.transform;
    }
}

TEST(NextPresentation, IsTheRefreshAfterNow) {
    constexpr MachTime kRefresh = 10'000'000;
    const Presented last{1'000'000'000, kRefresh};
    EXPECT_EQ(nextPresentation(last, last.time), last.time + kRefresh);
    EXPECT_EQ(nextPresentation(last, last.time + 1), last.time + kRefresh);
    EXPECT_EQ(nextPresentation(last, last.time + kRefresh), last.time + 2 * kRefresh);
    EXPECT_EQ(nextPresentation(last, last.time + 35'000'000), last.time + 4 * kRefresh);
    EXPECT_EQ(nextPresentation(last, last.time - 1), last.time);
}

TEST(NextPresentation, IsNowWhereNothingIsKnown) {
    EXPECT_EQ(nextPresentation({}, 77), 77u);
    EXPECT_EQ(nextPresentation({1'000'000'000, 0}, 1'000'000'001), 1'000'000'001u);
    EXPECT_EQ(nextPresentation({1'000'000'000, 10}, 2'000'000'001), 2'000'000'001u);
}

}  // namespace
}  // namespace skavlo
