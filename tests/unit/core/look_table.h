// What pixels the looks have that the settings describe, wherever they are drawn.
#pragma once

#include <array>
#include <ostream>
#include <vector>

#include "platform/property_list.h"

namespace skavlo {

// A colour of this opacity, all components from 0 to 1.
struct Layer {
    double red;
    double green;
    double blue;
    double alpha;
};

// Red, green, blue and alpha of the layers, the lowest first, premultiplied.
inline std::array<double, 4> blended(const std::vector<Layer>& layers) {
    std::array<double, 4> result{};
    for (const Layer& layer : layers) {
        const std::array<double, 4> colour{layer.red, layer.green, layer.blue, 1};
        for (std::size_t i = 0; i < 4; ++i) {
            result[i] = colour[i] * layer.alpha + result[i] * (1 - layer.alpha);
        }
    }
    return result;
}

// So far to the right of the finger and below it, in points.
struct Spot {
    int right;
    int below;
    std::vector<Layer> layers;
};

struct LookCase {
    const char* name;
    PropertyDictionary settings;
    std::vector<Spot> spots;
};
inline void PrintTo(const LookCase& look, std::ostream* out) {
    *out << look.name;
}

inline constexpr double kLightGrey = 2.0 / 3;
inline constexpr const char* kNothingToDraw = " ";  // as an emoji

// Without a setting named here each has its fallback. A border lies over the edge of its fill, as
// wide as it is; the colours' own alphas count for nothing.
inline std::vector<LookCase> lookCases() {
    const Layer grey{kLightGrey, kLightGrey, kLightGrey, 0.55};
    const Layer white{1, 1, 1, 0.55};
    const Layer greyDisc{kLightGrey, kLightGrey, kLightGrey, 0.5};
    const Layer whiteRing{1, 1, 1, 0.5};
    const PropertyArray red{1, 0, 0, 0.1};
    const PropertyArray green{0, 1, 0, 0.9};
    return {{"Circle",
             {},
             {{0, 0, {grey}},
              {20, 0, {grey}},
              {25, 0, {grey, white}},
              {0, -25, {grey, white}},
              {30, 0, {}},
              {22, 22, {}}}},
            {"ColouredCircle",
             {{"fillColor", red}, {"borderColor", green}, {"colorAlpha", 0.25}},
             {{0, 0, {{1, 0, 0, 0.25}}}, {25, 0, {{1, 0, 0, 0.25}, {0, 1, 0, 0.25}}}}},
            {"OpaqueCircleWithoutBorder",
             {{"fillColor", red}, {"colorAlpha", 1.0}, {"colorBorderWidth", 0.0}},
             {{0, 0, {{1, 0, 0, 1}}}, {25, 0, {{1, 0, 0, 1}}}, {30, 0, {}}}},
            {"Star", {{"displayMode", 1}}, {{0, 0, {{1, 0.8, 0, 0.55}}}, {38, 38, {}}}},
            {"EmojisDisc",
             {{"displayMode", 2}, {"emojiString", kNothingToDraw}, {"emojiShowBorder", true}},
             {{0, 0, {greyDisc}},
              {22, 0, {greyDisc}},
              {27, 0, {greyDisc, whiteRing}},
              {0, 27, {greyDisc, whiteRing}},
              {33, 0, {}},
              {24, 24, {}}}},
            {"ColouredDisc",
             {{"displayMode", 2},
              {"emojiString", kNothingToDraw},
              {"emojiShowBorder", true},
              {"emojiAlpha", 0.0},
              {"emojiFillColor", red},
              {"emojiFillAlpha", 0.25},
              {"emojiBorderColor", green},
              {"emojiBorderAlpha", 1.0},
              {"emojiBorderWidth", 10.0}},
             {{0, 0, {{1, 0, 0, 0.25}}}, {23, 0, {{0, 1, 0, 1}}}, {27, 0, {{0, 1, 0, 1}}}}}};
}

}  // namespace skavlo
