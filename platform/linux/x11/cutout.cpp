#include "platform/linux/x11/cutout.h"

#include <algorithm>

namespace skavlo {

namespace {

// Below this a pixel is left to what lies under the window. Low enough for the faintest marker that
// the settings application offers (opacity 0.1), high enough to end a fade before its last wisp.
constexpr std::uint32_t kVisibleAlpha = 24;

std::uint32_t opaqueColour(std::uint32_t premultiplied) {
    const std::uint32_t alpha = premultiplied >> 24U;
    std::uint32_t result = 0xff000000U;
    for (unsigned shift = 0; shift < 24; shift += 8) {
        const std::uint32_t component = (premultiplied >> shift) & 0xffU;
        result |= std::min(255U, (component * 255 + alpha / 2) / alpha) << shift;
    }
    return result;
}

}  // namespace

Cutout::Cutout(PixelSize size) : size_(size), rows_(static_cast<std::size_t>(size.height)) {}

void Cutout::update(const std::uint32_t* source, std::uint32_t* opaque,
                    std::span<const PixelRect> changed) {
    for (const PixelRect& rect : changed) {
        for (int y = rect.y; y < rect.bottom(); ++y) {
            const auto offset = static_cast<std::ptrdiff_t>(y) * size_.width;
            updateRow(source + offset, opaque + offset, y, rect);
        }
    }
}

void Cutout::updateRow(const std::uint32_t* source, std::uint32_t* opaque, int y,
                       const PixelRect& rect) {
    std::vector<Run> runs;
    const auto add = [&](int begin, int end) {
        if (begin >= end) return;
        if (!runs.empty() && runs.back().end == begin) {
            runs.back().end = end;
        } else {
            runs.push_back({begin, end});
        }
    };
    auto& row = rows_[static_cast<std::size_t>(y)];
    for (const Run& run : row) add(run.begin, std::min(run.end, rect.x));
    for (int x = rect.x; x < rect.right(); ++x) {
        if (source[x] >> 24U < kVisibleAlpha) continue;
        opaque[x] = opaqueColour(source[x]);
        add(x, x + 1);
    }
    for (const Run& run : row) add(std::max(run.begin, rect.right()), run.end);
    row = std::move(runs);
}

std::vector<PixelRect> Cutout::runs() const {
    std::vector<PixelRect> result;
    for (std::size_t y = 0; y < rows_.size(); ++y) {
        for (const Run& run : rows_[y]) {
            result.push_back({run.begin, static_cast<int>(y), run.end - run.begin, 1});
        }
    }
    return result;
}

}  // namespace skavlo
