#include <cstring>

#include "overlay/render/visibility.h"

namespace skavlo {
namespace {

constexpr int kRowsAhead = 8;
constexpr int kPixelsPerLine = 16;  // of the cache

// The window server has read these pixels on another processor, and taking them back from there
// lasts longer than writing them.
void fetchForWriting(const std::uint32_t* pixels, int count) {
    for (int x = 0; x < count; x += kPixelsPerLine) __builtin_prefetch(pixels + x, 1);
}

}  // namespace

void clear(const RenderTarget& target, const PixelRect& rect) {
    const PixelRect area = drawable(target, rect);
    for (int y = area.y; y < area.bottom(); ++y) {
        std::uint32_t* row = target.pixels + std::ptrdiff_t{y} * target.stride + area.x;
        std::memset(row, 0, std::size_t(area.width) * sizeof(*row));
    }
}

void copy(const RenderTarget& target, const PixelRect& rect, const std::uint32_t* picture) {
    const PixelRect area = drawable(target, rect);
    for (int y = area.y; y < area.bottom(); ++y) {
        std::uint32_t* row = target.pixels + std::ptrdiff_t{y} * target.stride + area.x;
        if (y + kRowsAhead < area.bottom()) {
            fetchForWriting(row + std::ptrdiff_t{kRowsAhead} * target.stride, area.width);
        }
        const std::uint32_t* from = picture + std::ptrdiff_t{y} * target.size.width + area.x;
        std::memcpy(row, from, std::size_t(area.width) * sizeof(*row));
    }
}

}  // namespace skavlo
