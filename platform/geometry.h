// Points (layout) and pixels (buffers). The two never mix without a scale.
#pragma once

#include <cstdint>

namespace skavlo {

struct Point {
    double x = 0;
    double y = 0;
    bool operator==(const Point&) const = default;
};

struct Size {
    double width = 0;
    double height = 0;
    bool operator==(const Size&) const = default;
};

struct Rect {
    Point origin;
    Size size;
    bool operator==(const Rect&) const = default;
};

struct PixelPoint {
    int x = 0;
    int y = 0;
    bool operator==(const PixelPoint&) const = default;
};

struct PixelSize {
    int width = 0;
    int height = 0;
    bool operator==(const PixelSize&) const = default;
};

// Half open: covers x to x + width - 1 and y to y + height - 1.
struct PixelRect {
    int x = 0;
    int y = 0;
    int width = 0;
    int height = 0;
    [[nodiscard]] int right() const { return x + width; }
    [[nodiscard]] int bottom() const { return y + height; }
    [[nodiscard]] bool empty() const { return width <= 0 || height <= 0; }
    bool operator==(const PixelRect&) const = default;
};

}  // namespace skavlo
