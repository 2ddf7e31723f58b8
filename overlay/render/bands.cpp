#include "overlay/render/bands.h"

#include "overlay/render/visibility.h"

namespace skavlo {
namespace {

constexpr std::size_t kFew = 4096;      // fewer seldom meet the same pixels
constexpr int kBandBytes = 512 * 1024;  // half of a small second-level cache
constexpr int kLeastRows = 16;

int rowsOfBand(int width) {
    return std::max(kBandBytes / int(sizeof(std::uint32_t)) / width, kLeastRows);
}

struct Layout {
    PixelRect area;
    int rows;  // of a band
    float radius;

    [[nodiscard]] int count() const { return (area.height + rows - 1) / rows; }
    [[nodiscard]] PixelRect clip(int band) const {
        const int top = band * rows;
        return {area.x, area.y + top, area.width, std::min(rows, area.height - top)};
    }
    // Calls `act` with the number of each band that the instance reaches into.
    template <class Act>
    void forEachBand(const Instance& instance, const Act& act) const {
        if (!finite(instance)) return;
        const float half = radius * instance.scale + 1;
        const auto held = [&](float y) {
            return int(std::clamp(y - float(area.y), 0.0F, float(area.height)));
        };
        const int end = (held(instance.y + half) + rows - 1) / rows;
        for (int i = held(instance.y - half) / rows; i < end; ++i) act(std::size_t(i));
    }
};

}  // namespace

Bands::Bands(const PixelRect& area, std::span<const Instance> instances, float radius)
    : whole_{area, instances} {
    const Layout layout{area, rowsOfBand(area.width), radius};
    if (instances.size() < kFew || layout.count() == 1) return;
    // A counting sort: first how many each band has, then where it begins.
    std::vector<std::size_t> places(std::size_t(layout.count()) + 1, 0);
    for (const Instance& instance : instances) {
        layout.forEachBand(instance, [&](std::size_t band) { ++places[band + 1]; });
    }
    for (std::size_t i = 1; i < places.size(); ++i) places[i] += places[i - 1];
    sorted_.resize(places.back());
    for (int i = 0; i < layout.count(); ++i) {
        const std::size_t begin = places[std::size_t(i)];
        const std::size_t size = places[std::size_t(i) + 1] - begin;
        bands_.push_back({layout.clip(i), std::span(sorted_).subspan(begin, size)});
    }
    for (const Instance& instance : instances) {
        layout.forEachBand(instance, [&](std::size_t band) { sorted_[places[band]++] = instance; });
    }
}

}  // namespace skavlo
