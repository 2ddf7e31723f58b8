// Circles against Cairo at a multiple of the resolution.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <ostream>
#include <sstream>
#include <string>

#include "overlay/render/render.h"
#include "reference.h"

namespace skavlo {
namespace {

constexpr double kDiameter = 55;  // points

struct Case {
    double scale;
    double pixelScale;
    double border;  // points
    bool translucent;
};

// "Scale0_05At2xBorder5Opaque"; names of tests hold no points.
std::string nameOf(const Case& c) {
    std::ostringstream name;
    name << "Scale" << c.scale << "At" << c.pixelScale << "xBorder" << c.border
         << (c.translucent ? "Translucent" : "Opaque");
    std::string text = name.str();
    std::ranges::replace(text, '.', '_');
    return text;
}
void PrintTo(const Case& c, std::ostream* out) {
    *out << nameOf(c);
}

CircleStyle styleOf(const Case& c) {
    const Colour fill = c.translucent ? Colour{0.66, 0.66, 0.66, 0.55} : Colour{0.1, 0.3, 0.9, 1};
    const Colour border = c.translucent ? Colour{1, 1, 1, 0.55} : Colour{1, 0.8, 0.1, 1};
    return {kDiameter * c.pixelScale, c.border * c.pixelScale, fill, border};
}

class CircleAccuracy : public testing::TestWithParam<Case> {};

TEST_P(CircleAccuracy, EdgesAreWithinTwoLevelsAndTheRestWithinOne) {
    const CircleStyle style = styleOf(GetParam());
    const double diameter = style.diameter * GetParam().scale;
    const int side = int(std::ceil(diameter)) + 6;
    const int middle = side / 2;  // a whole pixel, which dx and dy are counted from
    double worst = 0;
    for (const auto& [dx, dy] : {std::pair{0.0, 0.0}, {0.5, 0.5}, {0.25, 0.6}, {0.83, 0.07}}) {
        const Instance instance{float(middle + dx), float(middle + dy), float(GetParam().scale), 1};
        Bitmap drawn = reference::blank({side, side});
        drawCircles(reference::targetOf(drawn), {0, 0, side, side}, style, {&instance, 1});
        const auto expected = reference::circle(drawn.size, style, instance);
        const auto found = reference::difference(expected, drawn);
        EXPECT_GT(found.edgePixels, 0);
        EXPECT_LE(found.edgeMean, 2.0) << "centre +" << dx << ", +" << dy;
        EXPECT_LE(found.otherMost, 1.0) << "centre +" << dx << ", +" << dy;
        worst = std::max(worst, found.edgeMean);
    }
    RecordProperty("worst_edge_mean", std::to_string(worst));
    std::printf("    edge mean %.3f of 255\n", worst);
}

std::vector<Case> cases() {
    std::vector<Case> all;
    for (const double scale : {0.05, 0.1, 0.25, 0.5, 1.0, 1.5, 2.0, 3.0, 4.5}) {
        for (const double pixelScale : {1.0, 2.0}) {
            for (const double border : {0.0, 5.0}) {
                for (const bool translucent : {false, true}) {
                    all.push_back({scale, pixelScale, border, translucent});
                }
            }
        }
    }
    return all;
}

INSTANTIATE_TEST_SUITE_P(Looks, CircleAccuracy, testing::ValuesIn(cases()),
                         [](const auto& suite) { return nameOf(suite.param); });

}  // namespace
}  // namespace skavlo
