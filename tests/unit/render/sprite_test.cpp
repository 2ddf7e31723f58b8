// Pictures drawn scaled against Cairo at a multiple of the resolution.
#include "overlay/render/sprite.h"

#include <gtest/gtest.h>

#include <cmath>

#include "reference.h"

namespace skavlo {
namespace {

std::uint32_t grey(double level, double alpha) {
    const auto a = std::uint32_t(255 * alpha + 0.5);
    const auto v = std::uint32_t(level * alpha + 0.5);
    return a << 24 | v << 16 | v << 8 | v;
}

Bitmap softPicture(int side) {
    Bitmap picture = reference::blank({side, side});
    for (int y = 0; y < side; ++y) {
        for (int x = 0; x < side; ++x) {
            const double d = std::hypot(x + 0.5 - side / 2.0, y + 0.5 - side / 2.0) / side;
            const double wave = 128 + 127 * std::sin(20 * d);
            picture.pixels[std::size_t(y) * std::size_t(side) + std::size_t(x)] =
                grey(wave, std::clamp((0.5 - d) * 8, 0.0, 1.0));
        }
    }
    return picture;
}

// A triangle without a soft edge over a checkerboard of an eighth of the side.
Bitmap hardPicture(int side) {
    Bitmap picture = reference::blank({side, side});
    for (int y = 0; y < side; ++y) {
        for (int x = 0; x < side; ++x) {
            const bool field = (x * 8 / side + y * 8 / side) % 2 == 0;
            const bool triangle = std::abs(x - side / 2) < y / 2;
            picture.pixels[std::size_t(y) * std::size_t(side) + std::size_t(x)] =
                triangle ? 0xFF2040F0 : field ? 0xFFFFFFFF : 0;
        }
    }
    return picture;
}

struct Place {
    double dx;
    double dy;
};
constexpr Place kPlaces[] = {{0, 0}, {0.5, 0.5}, {0.25, 0.6}, {0.83, 0.07}};

double worstEdge(const Bitmap& picture, double side, float scale, float opacity) {
    const Sprite sprite(std::make_shared<Bitmap>(picture), side);
    const int room = int(std::ceil(side * double{scale})) + 6;
    double worst = 0;
    for (const Place& place : kPlaces) {
        const Instance instance{float(room / 2 + place.dx), float(room / 2 + place.dy), scale,
                                opacity};
        Bitmap drawn = reference::blank({room, room});
        drawSprites(reference::targetOf(drawn), {0, 0, room, room}, sprite, {&instance, 1});
        const auto expected = reference::sprite(drawn.size, picture, side, instance, 2);
        const auto found = reference::difference(expected, drawn);
        EXPECT_GT(found.edgePixels, 0);
        EXPECT_LE(found.edgeMean, 2.0) << "centre +" << place.dx << ", +" << place.dy;
        EXPECT_LE(found.otherMost, 2.0) << "centre +" << place.dx << ", +" << place.dy;
        worst = std::max(worst, found.edgeMean);
    }
    std::printf("    edge mean %.3f of 255\n", worst);
    return worst;
}

TEST(SpriteAccuracy, SoftPictureAtFullSize) {
    for (const int texels : {80, 160, 240, 81}) worstEdge(softPicture(texels), 80, 1, 1);
}

TEST(SpriteAccuracy, HardPictureAtFullSize) {
    for (const int texels : {80, 160, 240, 320, 81}) worstEdge(hardPicture(texels), 80, 1, 1);
}

TEST(SpriteAccuracy, EmojiAtFullSize) {
    for (const int texels : {80, 160}) worstEdge(reference::textPicture("😀", texels), 80, 1, 1);
}

TEST(SpriteAccuracy, FadingCopies) {
    for (const float scale : {0.93F, 0.7F, 0.5F, 0.31F, 0.11F}) {
        worstEdge(softPicture(160), 80, scale, 0.8F);
    }
}

}  // namespace
}  // namespace skavlo
