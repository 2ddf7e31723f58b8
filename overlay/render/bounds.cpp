#include <cstring>

#include "overlay/render/circle_look.h"
#include "overlay/render/visibility.h"

namespace skavlo {
namespace {

double unit(double v) {
    return v > 0 ? std::min(v, 1.0) : 0;
}

std::array<double, 4> premultiplied(const Colour& c) {
    const double a = unit(c.alpha);
    return {unit(c.blue) * a, unit(c.green) * a, unit(c.red) * a, a};
}

}  // namespace

CircleLook circleLook(const CircleStyle& style) {
    CircleLook look;
    if (!(style.diameter > 0) || !std::isfinite(style.diameter)) return look;
    const auto fill = premultiplied(style.fill);
    const auto border = premultiplied(style.border);
    const double radius = style.diameter / 2;
    const double width = style.borderWidth > 0 ? std::min(style.borderWidth, radius) : 0;
    for (std::size_t i = 0; i < 4; ++i) {
        look.inside[i] = float(fill[i]);
        look.rim[i] = float(width > 0 ? border[i] + fill[i] * (1 - border[3]) : fill[i]);
    }
    look.radius = float(radius);
    look.innerRadius = width > 0 ? float(radius - width) : 0;
    look.strongestAlpha = std::max(look.rim[3], look.inside[3]);
    return look;
}

PixelRect circleBounds(const CircleStyle& style, const Instance& instance) {
    const CircleLook look = circleLook(style);
    if (!visible(instance, 2.0 * look.radius, look.strongestAlpha)) return {};
    const double radius = double{look.radius} * instance.scale;
    return pixelsAround(instance.x, instance.y, radius + kCircleMargin);
}

void clear(const RenderTarget& target, const PixelRect& rect) {
    const PixelRect area = drawable(target, rect);
    for (int y = area.y; y < area.bottom(); ++y) {
        std::uint32_t* row = target.pixels + std::ptrdiff_t{y} * target.stride + area.x;
        std::memset(row, 0, std::size_t(area.width) * sizeof(*row));
    }
}

}  // namespace skavlo
