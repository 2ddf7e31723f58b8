#pragma once

namespace skavlo {

// Straight (not premultiplied) colour, each component 0 to 1.
struct Colour {
    double red = 0;
    double green = 0;
    double blue = 0;
    double alpha = 0;
    bool operator==(const Colour&) const = default;
};

}  // namespace skavlo
