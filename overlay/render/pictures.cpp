// Pictures that markers are made of.
#include <algorithm>
#include <array>
#include <cmath>
#include <numbers>

#include "overlay/render/sprite.h"

namespace skavlo {
namespace {

constexpr int kPoints = 5;
constexpr int kLines = 16;  // sampled per row of pixels
constexpr double kMargin = 0.02;
constexpr double kYellow[3] = {0, 204, 255};  // levels of blue, green, red

struct Corner {
    double x = 0;
    double y = 0;
};
using Star = std::array<Corner, 2 * kPoints>;

// A pentagram's outline with one point up, its bounding box centred in the square. The inner
// corners lie where the lines between the outer ones cross: at cos 72° / cos 36° of their radius.
Star star(double side) {
    constexpr double kStep = std::numbers::pi / kPoints;
    const double radius = side * (1 - 2 * kMargin) / (2 * std::sin(2 * kStep));
    const double inner = radius * std::cos(2 * kStep) / std::cos(kStep);
    const double middle = side / 2 + radius * (1 - std::cos(kStep)) / 2;
    Star corners;
    for (std::size_t i = 0; i < corners.size(); ++i) {
        const double r = i % 2 == 0 ? radius : inner;
        const double angle = kStep * double(i);
        corners[i] = {side / 2 + r * std::sin(angle), middle - r * std::cos(angle)};
    }
    return corners;
}

// Where the outline crosses the height y, from left to right.
std::vector<double> crossings(const Star& corners, double y) {
    std::vector<double> found;
    for (std::size_t i = 0; i < corners.size(); ++i) {
        const Corner& a = corners[i];
        const Corner& b = corners[(i + 1) % corners.size()];
        if ((a.y <= y) != (b.y <= y)) found.push_back(a.x + (b.x - a.x) * (y - a.y) / (b.y - a.y));
    }
    std::sort(found.begin(), found.end());
    return found;
}

// Adds what the line from x `begin` to `end` covers of each pixel of a row.
void coverLine(std::vector<double>& row, double begin, double end) {
    for (auto x = std::size_t(begin); double(x) < end && x < row.size(); ++x) {
        row[x] += (std::min(end, double(x + 1)) - std::max(begin, double(x))) / kLines;
    }
}

std::uint32_t yellow(double covered) {
    const double alpha = std::min(covered, 1.0);
    std::uint32_t pixel = std::uint32_t(255 * alpha + 0.5) << 24;
    for (int c = 0; c < 3; ++c) pixel |= std::uint32_t(kYellow[c] * alpha + 0.5) << (8 * c);
    return pixel;
}

std::uint32_t faded(std::uint32_t pixel, double alpha) {
    std::uint32_t result = 0;
    for (int shift = 0; shift < 32; shift += 8) {
        result |= std::uint32_t((pixel >> shift & 255) * alpha + 0.5) << shift;
    }
    return result;
}

}  // namespace

std::shared_ptr<const Bitmap> starBitmap(int side) {
    auto bitmap = std::make_shared<Bitmap>();
    if (side <= 0) return bitmap;
    bitmap->size = {side, side};
    const Star corners = star(side);
    for (int y = 0; y < side; ++y) {
        std::vector<double> row(std::size_t(side), 0.0);
        for (int line = 0; line < kLines; ++line) {
            const auto xs = crossings(corners, y + (line + 0.5) / kLines);
            for (std::size_t i = 0; i + 1 < xs.size(); i += 2) coverLine(row, xs[i], xs[i + 1]);
        }
        for (const double covered : row) bitmap->pixels.push_back(yellow(covered));
    }
    return bitmap;
}

std::shared_ptr<const Bitmap> composeEmoji(const Bitmap& label, double labelAlpha,
                                           const EmojiDisc* disc) {
    auto bitmap = std::make_shared<Bitmap>(label);
    const double alpha = labelAlpha > 0 ? std::min(labelAlpha, 1.0) : 0;
    for (std::uint32_t& pixel : bitmap->pixels) pixel = faded(pixel, alpha);
    if (disc == nullptr || bitmap->pixels.empty()) return bitmap;
    const double side = bitmap->size.width;
    const CircleStyle style{side, disc->borderWidth * side, disc->fill, disc->border};
    const Instance middle{float(side / 2), float(bitmap->size.height / 2.0), 1, 1};
    const RenderTarget target{bitmap->pixels.data(), bitmap->size.width, bitmap->size};
    drawCircles(target, {0, 0, bitmap->size.width, bitmap->size.height}, style, {&middle, 1});
    return bitmap;
}

}  // namespace skavlo
