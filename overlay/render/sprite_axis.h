// Which texels a row or column of pixels is made of, and in which parts. Internal to the renderer.
#pragma once

#include <algorithm>
#include <cmath>

namespace skavlo {

inline constexpr int kMostTaps = 5;  // for up to four texels per pixel, however they lie

struct Taps {
    int first = 0;
    float weights[kMostTaps] = {};  // of the texels from `first` on; the sum is at most 1
};

// The mean over `ratio` (1 to 4) texels from `begin` on; beyond the picture all is transparent.
inline Taps areaTaps(double begin, double ratio, int side) {
    Taps taps;
    taps.first = int(std::clamp(std::floor(begin), 0.0, side - 1.0));
    const float from = float(begin - taps.first);
    const float to = float(begin + ratio - taps.first);
    const float inverse = float(1 / ratio);
    const int count = std::min(kMostTaps, side - taps.first);
    for (int i = 0; i < count; ++i) {
        const float overlap = std::min(to, float(i + 1)) - std::max(from, float(i));
        taps.weights[i] = std::max(overlap, 0.0F) * inverse;
    }
    return taps;
}

// Between the two texels around `centre` (in texels, 0.5 being the middle of the first), the
// outermost ones going on outward; `covered` is the part of the pixel that the picture covers.
inline Taps linearTaps(double centre, double covered, int side) {
    Taps taps;
    const double held = std::clamp(centre - 0.5, 0.0, side - 1.0);
    taps.first = int(held);
    const double part = held - taps.first;
    taps.weights[0] = float(covered * (1 - part));
    if (taps.first + 1 < side) taps.weights[1] = float(covered * part);
    return taps;
}

// One direction of a picture that is drawn scaled.
struct SpriteAxis {
    double origin = 0;  // of the picture, in pixels
    double length = 0;  // of the picture, in pixels
    int side = 1;       // of the picture, in texels

    [[nodiscard]] double ratio() const { return side / length; }
    [[nodiscard]] Taps linear(int pixel) const {
        const double covered =
            std::min(pixel + 1.0, origin + length) - std::max(double(pixel), origin);
        const double centre = (pixel + 0.5 - origin) * ratio();
        return linearTaps(centre, std::clamp(covered, 0.0, 1.0), side);
    }
};

}  // namespace skavlo
