#include "overlay/render/circle_style.h"

#include "overlay/render/visibility.h"

namespace skavlo {
namespace {

// The edges are approximated by their tangents, which may reach this far beyond the disc (pixels).
constexpr double kCircleMargin = 0.125;

double unit(double v) {
    return v > 0 ? std::min(v, 1.0) : 0;
}

std::array<double, 4> premultiplied(const Colour& c) {
    const double a = unit(c.alpha);
    return {unit(c.blue) * a, unit(c.green) * a, unit(c.red) * a, a};
}

}  // namespace

PreparedCircle::PreparedCircle(const CircleStyle& style) {
    if (!(style.diameter > 0) || !std::isfinite(style.diameter)) return;
    const auto fill = premultiplied(style.fill);
    const auto border = premultiplied(style.border);
    const double whole = style.diameter / 2;
    const double width = style.borderWidth > 0 ? std::min(style.borderWidth, whole) : 0;
    for (std::size_t i = 0; i < 4; ++i) {
        inside[i] = float(fill[i]);
        rim[i] = float(width > 0 ? border[i] + fill[i] * (1 - border[3]) : fill[i]);
    }
    radius = float(whole);
    innerRadius = width > 0 ? float(whole - width) : 0;
    strongestAlpha = std::max(rim[3], inside[3]);
}

PixelRect circleBounds(const PreparedCircle& circle, const Instance& instance) {
    if (!visible(instance, 2.0 * circle.radius, circle.strongestAlpha)) return {};
    const double radius = double{circle.radius} * instance.scale;
    return pixelsAround(instance.x, instance.y, radius + kCircleMargin);
}

}  // namespace skavlo
