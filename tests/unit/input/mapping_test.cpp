#include "platform/linux/input/mapping.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "platform/digitizer/coordinates.h"

namespace skavlo {
namespace {

constexpr double kHalfPixel = 0.5;
constexpr double kExact = 1e-9;

// What the reader of digitizer events makes of a place.
Point readBack(Point written, Size screen) {
    if (written.x >= 0 && written.x <= 2 && written.y >= 0 && written.y <= 2)
        return {written.x * std::min(screen.width, screen.height),
                written.y * std::max(screen.width, screen.height)};
    return written;
}

Point markerPixel(const OutputLayout& layout, Point points) {
    const Size size = mainSizeInPoints(layout);
    const Point seen = readBack(digitizerCoordinates(points, size), size);
    const PixelRect main = mainOutput(layout)->rect;
    return {main.x + seen.x * layout.scale, main.y + seen.y * layout.scale};
}

void expectNear(Point got, Point want, double tolerance) {
    EXPECT_NEAR(got.x, want.x, tolerance);
    EXPECT_NEAR(got.y, want.y, tolerance);
}

OutputLayout oneOutput(PixelSize size, double scale) {
    OutputLayout layout;
    layout.outputs.push_back({.name = "OUT-1", .rect = {0, 0, size.width, size.height}});
    layout.desktop = size;
    layout.scale = scale;
    return layout;
}

// Fractions of a panel, corners and edges included.
const std::vector<Point> kPlaces{{0, 0},       {1, 0},     {0, 1},         {1, 1},
                                 {0.5, 0.5},   {0.25, 0},  {0.001, 0.999}, {0.37, 0.81},
                                 {0.999, 0.5}, {0.5, 0.02}};

struct ScreenCase {
    const char* name;
    PixelSize size;
    double scale;
};

class MarkerUnderFinger : public ::testing::TestWithParam<ScreenCase> {};

TEST_P(MarkerUnderFinger, OnEveryPlaceOfTheScreen) {
    const ScreenCase& screen = GetParam();
    const OutputLayout layout = oneOutput(screen.size, screen.scale);
    const Affine toPoints = deviceToPoints(layout, {});
    for (const Point place : kPlaces) {
        SCOPED_TRACE(::testing::Message() << place.x << "," << place.y);
        const Point contact{place.x * screen.size.width, place.y * screen.size.height};
        expectNear(markerPixel(layout, toPoints.apply(place)), contact, kHalfPixel);
    }
}

INSTANTIATE_TEST_SUITE_P(Screens, MarkerUnderFinger,
                         ::testing::Values(ScreenCase{"landscape", {1920, 1080}, 1},
                                           ScreenCase{"landscapeThreeHalves", {1920, 1080}, 1.5},
                                           ScreenCase{"landscapeDouble", {3840, 2160}, 2},
                                           ScreenCase{"portrait", {1080, 1920}, 1},
                                           ScreenCase{"portraitThreeHalves", {1200, 1920}, 1.5},
                                           ScreenCase{"portraitDouble", {1600, 2560}, 2},
                                           ScreenCase{"ultraWide", {2560, 1080}, 1},
                                           ScreenCase{"ultraWideThreeHalves", {2560, 1080}, 1.5},
                                           ScreenCase{"ultraWideDouble", {2560, 1080}, 2},
                                           ScreenCase{"veryWide", {5120, 1440}, 1},
                                           ScreenCase{"square", {1024, 1024}, 1}),
                         [](const auto& test) { return std::string(test.param.name); });

struct TurnCase {
    const char* name;
    Rotation rotation;
    bool reflectX;
    bool reflectY;
    Point cornerLeftTop;  // where the picture shows the panel's left top corner
    Point cornerRightTop;
    Point cornerLeftBottom;
};

class PanelTurn : public ::testing::TestWithParam<TurnCase> {};

TEST_P(PanelTurn, TakesTheTouchAlong) {
    const TurnCase& turn = GetParam();
    OutputInfo output;
    output.rotation = turn.rotation;
    output.reflectX = turn.reflectX;
    output.reflectY = turn.reflectY;
    const Affine map = panelToPicture(output);
    expectNear(map.apply({0, 0}), turn.cornerLeftTop, kExact);
    expectNear(map.apply({1, 0}), turn.cornerRightTop, kExact);
    expectNear(map.apply({0, 1}), turn.cornerLeftBottom, kExact);
}

INSTANTIATE_TEST_SUITE_P(
    Turns, PanelTurn,
    ::testing::Values(
        TurnCase{"normal", Rotation::normal, false, false, {0, 0}, {1, 0}, {0, 1}},
        TurnCase{"left", Rotation::left, false, false, {1, 0}, {1, 1}, {0, 0}},
        TurnCase{"inverted", Rotation::inverted, false, false, {1, 1}, {0, 1}, {1, 0}},
        TurnCase{"right", Rotation::right, false, false, {0, 1}, {0, 0}, {1, 1}},
        TurnCase{"mirroredX", Rotation::normal, true, false, {1, 0}, {0, 0}, {1, 1}},
        TurnCase{"mirroredY", Rotation::normal, false, true, {0, 1}, {1, 1}, {0, 0}},
        TurnCase{"mirroredBoth", Rotation::normal, true, true, {1, 1}, {0, 1}, {1, 0}},
        TurnCase{"leftMirroredX", Rotation::left, true, false, {0, 0}, {0, 1}, {1, 0}},
        TurnCase{"leftMirroredY", Rotation::left, false, true, {1, 1}, {1, 0}, {0, 1}},
        TurnCase{"rightMirroredX", Rotation::right, true, false, {1, 1}, {1, 0}, {0, 1}},
        TurnCase{"rightMirroredY", Rotation::right, false, true, {0, 0}, {0, 1}, {1, 0}},
        TurnCase{"invertedMirroredX", Rotation::inverted, true, false, {0, 1}, {1, 1}, {0, 0}}),
    [](const auto& test) { return std::string(test.param.name); });

TEST(DeviceMapping, TurnedOutputKeepsTheMarkerUnderTheFinger) {
    OutputLayout layout = oneOutput({1080, 1920}, 1.5);  // a 1920 x 1080 panel, turned left
    layout.outputs[0].rotation = Rotation::left;
    const Affine toPoints = deviceToPoints(layout, {});
    // The panel's place (u, v) shows the picture's place (1 - v, u).
    for (const Point place : kPlaces) {
        const Point contact{(1 - place.y) * 1080, place.x * 1920};
        expectNear(markerPixel(layout, toPoints.apply(place)), contact, kHalfPixel);
    }
}

// A 1920 x 1080 main output, right of it a turned 1200 x 1920 one, left and above a small panel.
OutputLayout threeOutputs() {
    OutputLayout layout;
    layout.outputs = {
        {.name = "DP-1", .rect = {800, 480, 1920, 1080}, .primary = true},
        {.name = "HDMI-1", .rect = {2720, 0, 1200, 1920}, .rotation = Rotation::right},
        {.name = "eDP-1", .rect = {0, 0, 800, 480}}};
    layout.desktop = {3920, 1920};
    return layout;
}

TEST(DeviceMapping, NamedOutputWins) {
    OutputLayout layout = threeOutputs();
    layout.outputs[2].internal = true;
    const Affine toPoints = deviceToPoints(
        layout, {.outputName = "DP-1", .desktopTransform = Affine{{0, 0, 0, 0, 0, 0}}});
    expectNear(markerPixel(layout, toPoints.apply({0.5, 0.5})), {800 + 960, 480 + 540}, kHalfPixel);
}

TEST(DeviceMapping, XTransformationComesBeforeTheGuess) {
    OutputLayout layout = threeOutputs();
    layout.outputs[2].internal = true;
    // The matrix that lays a device over HDMI-1, turned right.
    const double x = 2720.0 / 3920;
    const double width = 1200.0 / 3920;
    const Affine transform{{0, width, x, -1, 0, 1}};
    const Affine toPoints = deviceToPoints(layout, {.desktopTransform = transform});
    expectNear(markerPixel(layout, toPoints.apply({0.25, 0.75})), {2720 + 0.75 * 1200, 0.75 * 1920},
               kHalfPixel);
    // Naming the output gives the same.
    const Affine named = deviceToPoints(layout, {.outputName = "HDMI-1"});
    expectNear(named.apply({0.25, 0.75}), toPoints.apply({0.25, 0.75}), 1e-6);
}

TEST(DeviceMapping, GuessesInternalThenPrimaryThenMain) {
    OutputLayout layout = threeOutputs();
    layout.main = 1;
    EXPECT_EQ(outputOfDevice(layout, "")->name, "DP-1");
    EXPECT_EQ(outputOfDevice(layout, "no such output")->name, "DP-1");
    layout.outputs[2].internal = true;
    EXPECT_EQ(outputOfDevice(layout, "")->name, "eDP-1");
    layout.outputs[0].primary = layout.outputs[2].internal = false;
    EXPECT_EQ(outputOfDevice(layout, "")->name, "HDMI-1");
}

struct MappedCase {
    const char* name;
    DevicePlacement placement;
    const char* output;
};
class MappedOutput : public ::testing::TestWithParam<MappedCase> {};

TEST_P(MappedOutput, IsTheNamedOrTheCoveredOne) {
    EXPECT_EQ(mappedOutput(threeOutputs(), GetParam().placement), GetParam().output);
}

constexpr double kDesktopWidth = 3920;
constexpr double kDesktopHeight = 1920;
INSTANTIATE_TEST_SUITE_P(
    Of, MappedOutput,
    ::testing::Values(
        MappedCase{"nothing", {}, ""}, MappedCase{"name", {.outputName = "HDMI-1"}, "HDMI-1"},
        MappedCase{"nameOfNoOutput", {.outputName = "VGA-1"}, ""},
        MappedCase{"wholeDesktop", {.desktopTransform = Affine{}}, ""},
        MappedCase{"matrixOfOneOutput",
                   {.desktopTransform = Affine{{1920 / kDesktopWidth, 0, 800 / kDesktopWidth, 0,
                                                1080 / kDesktopHeight, 480 / kDesktopHeight}}},
                   "DP-1"},
        MappedCase{
            "turnedMatrix",
            {.desktopTransform = Affine{{0, 1200 / kDesktopWidth, 2720 / kDesktopWidth, -1, 0, 1}}},
            "HDMI-1"},
        MappedCase{
            "halfOfAnOutput",
            {.desktopTransform = Affine{{600 / kDesktopWidth, 0, 2720 / kDesktopWidth, 0, 1, 0}}},
            ""}),
    [](const auto& test) { return std::string(test.param.name); });

struct MainCase {
    const char* name;
    std::vector<OutputInfo> outputs;
    const char* touchOutput;
    std::size_t main;
};
class MainOutput : public ::testing::TestWithParam<MainCase> {};

TEST_P(MainOutput, FollowsTheTouchscreenThenThePanelThenThePrimaryOne) {
    EXPECT_EQ(chooseMainOutput(GetParam().outputs, GetParam().touchOutput), GetParam().main);
}

const OutputInfo kPlain{.name = "DP-1"};
const OutputInfo kPrimary{.name = "HDMI-1", .primary = true};
const OutputInfo kPanel{.name = "eDP-1", .internal = true};
INSTANTIATE_TEST_SUITE_P(
    Of, MainOutput,
    ::testing::Values(MainCase{"none", {}, "", 0}, MainCase{"first", {kPlain, kPlain}, "", 0},
                      MainCase{"primary", {kPlain, kPrimary}, "", 1},
                      MainCase{"panelBeforePrimary", {kPlain, kPrimary, kPanel}, "", 2},
                      MainCase{"touched", {kPlain, kPrimary, kPanel}, "DP-1", 0},
                      MainCase{"touchedOneIsGone", {kPlain, kPrimary}, "eDP-1", 1}),
    [](const auto& test) { return std::string(test.param.name); });

struct SameScreenCase {
    const char* name;
    void (*change)(OutputLayout& layout);
    bool same;
};
void PrintTo(const SameScreenCase& change, std::ostream* out) {
    *out << change.name;
}
class SameMainScreen : public ::testing::TestWithParam<SameScreenCase> {};

TEST_P(SameMainScreen, IsOneOfTheSameNameSizeTurnAndScale) {
    OutputLayout before;
    before.outputs = {{.name = "DP-1", .rect = {0, 0, 1920, 1080}},
                      {.name = "eDP-1", .rect = {1920, 0, 1280, 800}}};
    before.desktop = {3200, 1080};
    before.main = 1;
    OutputLayout after = before;
    GetParam().change(after);
    EXPECT_EQ(sameMainScreen(before, after), GetParam().same);
    EXPECT_EQ(sameMainScreen(after, before), GetParam().same);
}

INSTANTIATE_TEST_SUITE_P(
    After, SameMainScreen,
    ::testing::Values(
        SameScreenCase{"nothing", [](OutputLayout&) {}, true},
        SameScreenCase{"aMove", [](OutputLayout& layout) { layout.outputs[1].rect.x = 0; }, true},
        SameScreenCase{"theOtherOnesEnd",
                       [](OutputLayout& layout) {
                           layout.outputs.erase(layout.outputs.begin());
                           layout.desktop = {1280, 800};
                           layout.main = 0;
                       },
                       true},
        SameScreenCase{"itsEnd",
                       [](OutputLayout& layout) {
                           layout.outputs.pop_back();
                           layout.main = 0;
                       },
                       false},
        SameScreenCase{"anEndOfAll", [](OutputLayout& layout) { layout.outputs.clear(); }, false},
        SameScreenCase{"anotherChoice", [](OutputLayout& layout) { layout.main = 0; }, false},
        SameScreenCase{
            "aTurn", [](OutputLayout& layout) { layout.outputs[1].rotation = Rotation::inverted; },
            false},
        SameScreenCase{"aReflection",
                       [](OutputLayout& layout) { layout.outputs[1].reflectX = true; }, false},
        SameScreenCase{"anotherSize",
                       [](OutputLayout& layout) { layout.outputs[1].rect.height = 720; }, false},
        SameScreenCase{"anotherScale", [](OutputLayout& layout) { layout.scale = 2; }, false}),
    [](const auto& test) { return std::string(test.param.name); });

TEST(Connectors, OfPanelsAreInternal) {
    for (const char* name : {"eDP-1", "LVDS-1", "DSI-2"}) EXPECT_TRUE(isInternalConnector(name));
    for (const char* name : {"DP-1", "HDMI-A-1", "VGA-1", ""}) {
        EXPECT_FALSE(isInternalConnector(name));
    }
}

TEST(DeviceMapping, OtherOutputsLieOutsideTheMainOne) {
    OutputLayout layout = threeOutputs();
    layout.scale = 2;
    const Point points = deviceToPoints(layout, {.outputName = "eDP-1"}).apply({0, 0});
    expectNear(points, {-400, -240}, kExact);
    expectNear(markerPixel(layout, points), {0, 0}, kHalfPixel);
    for (const Point place : kPlaces) {
        const Point contact{place.x * 800, place.y * 480};
        const Affine toPoints = deviceToPoints(layout, {.outputName = "eDP-1"});
        expectNear(markerPixel(layout, toPoints.apply(place)), contact, kHalfPixel);
    }
}

TEST(DeviceMapping, WithoutOutputsTheDesktopIsTheScreen) {
    OutputLayout layout;
    layout.desktop = {1280, 720};
    layout.scale = 2;
    EXPECT_EQ(mainSizeInPoints(layout), (Size{640, 360}));
    expectNear(deviceToPoints(layout, {}).apply({0.5, 0.5}), {320, 180}, kExact);
    expectNear(deviceToPoints({}, {}).apply({0.5, 0.5}), {0, 0}, kExact);
}

TEST(DeviceMapping, UselessScaleCountsAsOne) {
    OutputLayout layout = oneOutput({100, 50}, 0);
    EXPECT_EQ(mainSizeInPoints(layout), (Size{100, 50}));
}

TEST(Affine, ComposeAppliesTheInnerFirst) {
    const Affine inner{{2, 0, 1, 0, 3, 0}};
    const Affine outer{{0, -1, 0, 1, 0, 5}};
    const Point p{4, 7};
    EXPECT_EQ(compose(outer, inner).apply(p), outer.apply(inner.apply(p)));
}

}  // namespace
}  // namespace skavlo
