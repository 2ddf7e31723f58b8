// Sizes, scales and turns of Wayland's outputs, as pure functions.
#pragma once

#include <cstdint>
#include <optional>

#include "platform/geometry.h"
#include "platform/linux/output_layout.h"

namespace skavlo {

// What is known of an output's size. Sizes in `mode` are pixels of the panel, not turned.
struct WaylandOutputSize {
    PixelSize mode = {};
    std::int32_t transform = 0;  // of wl_output
    int integerScale = 1;        // of wl_output; rounded up where the true one is a fraction
    PixelSize logical = {};      // of xdg-output, in points, turned; empty: not told
    bool operator==(const WaylandOutputSize&) const = default;
};

// Output size in points; from the mode and the whole scale where xdg-output told none.
PixelSize logicalSize(const WaylandOutputSize& output);

// Pixels per point of a buffer that the compositor shows pixel by pixel. `preferred` is what the
// compositor asked of the surface, in 120ths; `viewport`: fractions can be expressed at all.
double surfaceScale(const WaylandOutputSize& output, std::optional<std::uint32_t> preferred,
                    bool viewport);

// Of a surface this large in points: rounded to the nearest, halves up, at least one pixel.
PixelSize bufferSize(PixelSize points, double scale);

// Turn and mirror in the terms of OutputInfo.
struct OutputTurn {
    Rotation rotation = Rotation::normal;
    bool reflectX = false;
    bool operator==(const OutputTurn&) const = default;
};
// An unknown value counts as not turned.
OutputTurn turnOfTransform(std::int32_t transform);

}  // namespace skavlo
