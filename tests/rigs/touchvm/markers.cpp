#include "tests/rigs/touchvm/markers.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>

#include "tests/e2e/wayland/wayland_rig.h"
#include "tools/rig/screenshot.h"

namespace skavlo::test {

namespace {

// The area around the place, which is made background.
PixelRect takeArea(Bitmap& picture, PixelPoint start, std::uint32_t background) {
    PixelPoint first = start;
    PixelPoint last = start;
    std::vector<PixelPoint> open{start};
    while (!open.empty()) {
        const PixelPoint place = open.back();
        open.pop_back();
        if (place.x < 0 || place.y < 0 || place.x >= picture.size.width ||
            place.y >= picture.size.height || rig::pixelAt(picture, place) == background) {
            continue;
        }
        picture.pixels[static_cast<std::size_t>(place.y) * picture.size.width + place.x] =
            background;
        first = {std::min(first.x, place.x), std::min(first.y, place.y)};
        last = {std::max(last.x, place.x), std::max(last.y, place.y)};
        for (const auto& [x, y] : {std::pair{-1, 0}, {1, 0}, {0, -1}, {0, 1}}) {
            open.push_back({place.x + x, place.y + y});
        }
    }
    return {first.x, first.y, last.x - first.x + 1, last.y - first.y + 1};
}

// Grey 2/3 at 0.55, once, over the background.
bool isBlendedOnce(std::uint32_t colour, std::uint32_t background) {
    constexpr double kTolerance = 2;
    for (const unsigned shift : {0U, 8U, 16U}) {
        const double below = (background >> shift) & 0xffU;
        const double expected = 0.55 * 170 + 0.45 * below;
        if (std::abs(((colour >> shift) & 0xffU) - expected) > kTolerance) return false;
    }
    return true;
}

bool isAt(const Marker& marker, Point place, std::uint32_t background) {
    // As in WaylandRig::markerAt().
    constexpr double kTolerance = 1;
    const PixelRect& bounds = marker.bounds;
    return std::abs(bounds.x + bounds.width / 2.0 - place.x) <= kTolerance &&
           std::abs(bounds.y + bounds.height / 2.0 - place.y) <= kTolerance &&
           std::abs(bounds.width - kMarkerWidth) <= 2 * kTolerance &&
           std::abs(bounds.height - kMarkerWidth) <= 2 * kTolerance &&
           isBlendedOnce(marker.middle, background);
}

}  // namespace

std::vector<Marker> markersIn(const Bitmap& picture, std::uint32_t background) {
    Bitmap left = picture;
    std::vector<Marker> markers;
    for (int y = 0; y < picture.size.height; ++y) {
        for (int x = 0; x < picture.size.width; ++x) {
            if (rig::pixelAt(left, {x, y}) == background) continue;
            const PixelRect area = takeArea(left, {x, y}, background);
            const PixelPoint middle{area.x + area.width / 2, area.y + area.height / 2};
            markers.push_back({area, rig::pixelAt(picture, middle)});
        }
    }
    return markers;
}

bool areAt(const std::vector<Marker>& markers, const std::vector<Point>& places,
           std::uint32_t background) {
    return std::equal(
        markers.begin(), markers.end(), places.begin(), places.end(),
        [&](const Marker& marker, Point place) { return isAt(marker, place, background); });
}

}  // namespace skavlo::test
