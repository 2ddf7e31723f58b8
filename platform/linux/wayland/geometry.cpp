#include "platform/linux/wayland/geometry.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace skavlo {

namespace {

constexpr double kPreferredUnits = 120;
constexpr std::int32_t kFlipped = 4;  // added to the four turns
constexpr std::int32_t kTransforms = 8;

PixelSize turnedMode(const WaylandOutputSize& output) {
    PixelSize size = output.mode;
    if (output.transform % 2 != 0) std::swap(size.width, size.height);
    return size;
}

}  // namespace

PixelSize logicalSize(const WaylandOutputSize& output) {
    if (output.logical.width > 0 && output.logical.height > 0) return output.logical;
    const PixelSize mode = turnedMode(output);
    const int scale = std::max(1, output.integerScale);
    return {mode.width / scale, mode.height / scale};
}

double surfaceScale(const WaylandOutputSize& output, std::optional<std::uint32_t> preferred,
                    bool viewport) {
    if (!viewport) return std::max(1, output.integerScale);
    if (preferred && *preferred > 0) return *preferred / kPreferredUnits;
    const PixelSize logical = logicalSize(output);
    const PixelSize mode = turnedMode(output);
    if (logical.width <= 0 || logical.height <= 0 || mode.width <= 0) {
        return std::max(1, output.integerScale);
    }
    // The points are rounded: of the two sides the longer one gives the truer ratio.
    return logical.width >= logical.height ? static_cast<double>(mode.width) / logical.width
                                           : static_cast<double>(mode.height) / logical.height;
}

PixelSize bufferSize(PixelSize points, double scale) {
    const auto pixels = [&](int length) {
        return std::max(1, static_cast<int>(std::floor(length * scale + 0.5)));
    };
    return {pixels(points.width), pixels(points.height)};
}

OutputTurn turnOfTransform(std::int32_t transform) {
    if (transform < 0 || transform >= kTransforms) return {};
    constexpr Rotation kTurns[] = {Rotation::normal, Rotation::left, Rotation::inverted,
                                   Rotation::right};
    return {kTurns[transform % kFlipped], transform >= kFlipped};
}

}  // namespace skavlo
