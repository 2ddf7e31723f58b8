#include "platform/linux/x11/cutout.h"

#include <algorithm>
#include <array>

namespace skavlo {

namespace {

// Below this a pixel is left to what lies under the window. Low enough for the faintest marker that
// the settings application offers (opacity 0.1), high enough to end a fade before its last wisp.
constexpr std::uint32_t kVisibleAlpha = 24;

constexpr unsigned kFractionBits = 16;

// 255 / alpha in fixed point, rounded up: a division for each component of each pixel would be most
// of the time from a touch to its marker.
constexpr std::array<std::uint32_t, 256> makeReciprocals() {
    std::array<std::uint32_t, 256> result{};
    for (std::uint32_t alpha = 1; alpha < result.size(); ++alpha) {
        result[alpha] = ((255U << kFractionBits) + alpha - 1) / alpha;
    }
    return result;
}
constexpr auto kReciprocals = makeReciprocals();

std::uint32_t opaqueColour(std::uint32_t premultiplied) {
    const std::uint32_t factor = kReciprocals[premultiplied >> 24U];
    std::uint32_t result = 0xff000000U;
    for (unsigned shift = 0; shift < 24; shift += 8) {
        const std::uint32_t component = (premultiplied >> shift) & 0xffU;
        const std::uint32_t straight =
            (component * factor + (1U << (kFractionBits - 1))) >> kFractionBits;
        result |= std::min(255U, straight) << shift;
    }
    return result;
}

}  // namespace

Cutout::Cutout(PixelSize size)
    : size_(size), rows_(static_cast<std::size_t>(size.height)), cut_(rows_) {}

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
    Row runs;
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
    const auto visible = [&](int x) { return source[x] >> 24U >= kVisibleAlpha; };
    std::uint32_t last = 0;  // most neighbours are equal
    std::uint32_t lastOpaque = 0;
    for (int x = rect.x; x < rect.right(); ++x) {
        const int begin = x;
        for (; x < rect.right() && visible(x); ++x) {
            if (source[x] != last) lastOpaque = opaqueColour(last = source[x]);
            opaque[x] = lastOpaque;
        }
        add(begin, x);
    }
    for (const Run& run : row) add(std::max(run.begin, rect.right()), run.end);
    row = std::move(runs);
    auto& cut = cut_[static_cast<std::size_t>(y)];
    cut = united(cut, row);
    settled_ = settled_ && cut == row;
}

Cutout::Row Cutout::united(const Row& a, const Row& b) {
    Row sorted(a.size() + b.size());
    std::merge(a.begin(), a.end(), b.begin(), b.end(), sorted.begin(),
               [](const Run& left, const Run& right) { return left.begin < right.begin; });
    Row result;
    for (const Run& run : sorted) {
        if (!result.empty() && run.begin <= result.back().end) {
            result.back().end = std::max(result.back().end, run.end);
        } else {
            result.push_back(run);
        }
    }
    return result;
}

bool Cutout::settle() {
    if (settled_) return false;
    cut_ = rows_;
    settled_ = true;
    return true;
}

std::vector<PixelRect> Cutout::runs() const {
    std::vector<PixelRect> result;
    for (std::size_t y = 0; y < cut_.size(); ++y) {
        for (const Run& run : cut_[y]) {
            result.push_back({run.begin, static_cast<int>(y), run.end - run.begin, 1});
        }
    }
    return result;
}

}  // namespace skavlo
