#pragma once

#include "platform/property_list.h"

namespace skavlo {

// Straight (not premultiplied) colour, each component 0 to 1.
struct Colour {
    double red = 0;
    double green = 0;
    double blue = 0;
    double alpha = 0;
    bool operator==(const Colour&) const = default;
};

inline constexpr Colour kLightGrayColor{2.0 / 3.0, 2.0 / 3.0, 2.0 / 3.0, 1.0};
inline constexpr Colour kWhiteColor{1.0, 1.0, 1.0, 1.0};

// An array of exactly four numbers, red, green, blue and alpha, each read loosely and at single
// precision; anything else, a missing value included, is the default colour.
Colour skv_colorFromValue(const PropertyValue* value, const Colour& defaultColor);

// Red, green, blue, alpha, as they are.
PropertyArray skv_arrayFromColor(const Colour& color);

}  // namespace skavlo
