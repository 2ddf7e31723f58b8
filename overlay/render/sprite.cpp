#include "overlay/render/sprite.h"

#include <array>
#include <cmath>

#include "overlay/render/sprite_axis.h"
#include "overlay/render/visibility.h"

namespace skavlo {
namespace {

using Levels = std::array<float, 4>;

bool isPicture(const Bitmap* bitmap) {
    if (bitmap == nullptr || bitmap->size.width <= 0) return false;
    const auto side = std::size_t(bitmap->size.width);
    return bitmap->size.width == bitmap->size.height && bitmap->pixels.size() == side * side;
}

Levels average(const Bitmap& picture, const Taps& across, const Taps& down) {
    Levels sum{};
    const int side = picture.size.width;
    for (int j = 0; j < kMostTaps && down.first + j < side; ++j) {
        const auto row = std::size_t(down.first + j) * std::size_t(side);
        for (int i = 0; i < kMostTaps && across.first + i < side; ++i) {
            const float weight = across.weights[i] * down.weights[j];
            const std::uint32_t pixel = picture.pixels[row + std::size_t(across.first + i)];
            for (std::size_t c = 0; c < 4; ++c) {
                sum[c] += weight * float(pixel >> (8 * c) & 255);
            }
        }
    }
    return sum;
}

std::uint32_t rounded(const Levels& levels) {
    std::uint32_t pixel = 0;
    for (std::size_t c = 0; c < 4; ++c) pixel |= std::uint32_t(levels[c] + 0.5F) << (8 * c);
    return pixel;
}

// Half the side, rounded up; each of the new pixels is the mean of the equal part of the picture
// that it stands for, two by two pixels when the side is even.
std::shared_ptr<const Bitmap> halved(const Bitmap& picture) {
    const int side = (picture.size.width + 1) / 2;
    const double ratio = double(picture.size.width) / side;
    std::vector<Taps> taps;
    taps.reserve(static_cast<std::size_t>(side));
    for (int i = 0; i < side; ++i) taps.push_back(areaTaps(i * ratio, ratio, picture.size.width));
    auto result = std::make_shared<Bitmap>();
    result->size = {side, side};
    for (const Taps& down : taps) {
        for (const Taps& across : taps) {
            result->pixels.push_back(rounded(average(picture, across, down)));
        }
    }
    return result;
}

}  // namespace

Sprite::Sprite(std::shared_ptr<const Bitmap> picture, double displaySize)
    : displaySize_(displaySize) {
    if (!isPicture(picture.get())) return;
    levels_.push_back(std::move(picture));
    while (levels_.back()->size.width > 1) levels_.push_back(halved(*levels_.back()));
}

PixelRect spriteBounds(const Sprite& sprite, const Instance& instance) {
    if (sprite.levels().empty() || !visible(instance, sprite.displaySize(), 1)) return {};
    return pixelsAround(instance.x, instance.y, sprite.displaySize() * instance.scale / 2);
}

}  // namespace skavlo
