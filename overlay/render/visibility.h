// What both kinds of look share: which instances are drawn at all, and where they may land.
#pragma once

#include <algorithm>
#include <cmath>
#include <cstdint>

#include "overlay/render/render.h"

namespace skavlo {

inline constexpr double kSmallestSide = 0.5;         // pixels
inline constexpr double kSmallestAlpha = 1.0 / 255;  // one level

inline bool finite(const Instance& i) {
    return std::isfinite(i.x) && std::isfinite(i.y) && std::isfinite(i.scale) &&
           std::isfinite(i.opacity);
}

// `side` is the look's side at scale 1, `alpha` the strongest alpha anywhere in it.
inline bool visible(const Instance& i, double side, double alpha) {
    return finite(i) && i.scale > 0 && side * i.scale >= kSmallestSide && i.opacity > 0 &&
           std::min(1.0F, i.opacity) * alpha >= kSmallestAlpha;
}

// Whole pixels around a square, each side held to a range in which sums of two stay integers.
inline PixelRect pixelsAround(double x, double y, double half) {
    static constexpr double kLimit = 1 << 29;
    const auto low = [](double v) { return int(std::clamp(std::floor(v), -kLimit, kLimit)); };
    const auto high = [](double v) { return int(std::clamp(std::ceil(v), -kLimit, kLimit)); };
    const int left = low(x - half);
    const int top = low(y - half);
    return {left, top, high(x + half) - left, high(y + half) - top};
}

inline PixelRect intersection(const PixelRect& a, const PixelRect& b) {
    const int left = std::max(a.x, b.x);
    const int top = std::max(a.y, b.y);
    const int right = int(std::min(std::int64_t{a.x} + a.width, std::int64_t{b.x} + b.width));
    const int bottom = int(std::min(std::int64_t{a.y} + a.height, std::int64_t{b.y} + b.height));
    if (right <= left || bottom <= top) return {};
    return {left, top, right - left, bottom - top};
}

inline PixelRect drawable(const RenderTarget& target, const PixelRect& clip) {
    if (target.pixels == nullptr || clip.empty() || target.size.width <= 0) return {};
    return intersection({0, 0, target.size.width, target.size.height}, clip);
}

}  // namespace skavlo
