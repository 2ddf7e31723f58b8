// Pictures drawn scaled against Cairo at a multiple of the resolution.
#include "overlay/render/sprite.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>

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
                triangle ? 0xFF2040F0
                : field  ? 0xFFFFFFFF
                         : 0;
        }
    }
    return picture;
}

struct Place {
    double dx;
    double dy;
};
constexpr Place kPlaces[] = {{0, 0}, {0.5, 0.5}, {0.25, 0.6}, {0.83, 0.07}};

struct Shown {
    Bitmap picture;
    double side;  // pixels at scale 1
    float scale;
    float opacity;
};

struct Error {
    double ours = 0;
    double bilinear = 0;  // Cairo's
};

// Mean errors over the edge pixels, at the place where ours is the greatest.
Error worstEdge(const Shown& shown) {
    const Sprite sprite(std::make_shared<Bitmap>(shown.picture), shown.side);
    const int room = int(std::ceil(shown.side * double{shown.scale})) + 6;
    const int middle = room / 2;  // a whole pixel, which the places are counted from
    Error worst;
    for (const Place& place : kPlaces) {
        const Instance instance{float(middle + place.dx), float(middle + place.dy), shown.scale,
                                shown.opacity};
        Bitmap drawn = reference::blank({room, room});
        drawSprites(reference::targetOf(drawn), {0, 0, room, room}, sprite, {&instance, 1});
        const auto expected = reference::sprite(drawn.size, shown.picture, shown.side, instance, 2);
        const auto found = reference::difference(expected, drawn);
        EXPECT_GT(found.edgePixels, 0);
        EXPECT_LE(found.otherMost, 2.0) << "centre +" << place.dx << ", +" << place.dy;
        if (found.edgeMean < worst.ours) continue;
        const auto peer =
            reference::bilinearSprite(drawn.size, shown.picture, shown.side, instance);
        worst = {found.edgeMean, reference::difference(expected, peer).edgeMean};
    }
    std::printf("    %d texels at scale %.2f: edge mean %.3f of 255, Cairo bilinear %.3f\n",
                shown.picture.size.width, double{shown.scale}, worst.ours, worst.bilinear);
    return worst;
}

TEST(SpriteAccuracy, SoftPictureAtFullSize) {
    for (const int texels : {80, 160, 240, 81}) {
        EXPECT_LE(worstEdge({softPicture(texels), 80, 1, 1}).ours, 2.0) << texels;
    }
}

TEST(SpriteAccuracy, HardPictureAtFullSize) {
    for (const int texels : {80, 160, 240, 320, 81}) {
        EXPECT_LE(worstEdge({hardPicture(texels), 80, 1, 1}).ours, 2.0) << texels;
    }
}

TEST(SpriteAccuracy, EmojiAtFullSize) {
    for (const int texels : {80, 160}) {
        const Bitmap emoji = reference::textPicture("😀", texels);
        EXPECT_LE(worstEdge({emoji, 80, 1, 1}).ours, 2.0) << texels;
    }
}

TEST(SpriteAccuracy, FadingCopiesOfSoftPictures) {
    for (const float scale : {0.93F, 0.7F, 0.5F, 0.31F}) {
        EXPECT_LE(worstEdge({softPicture(160), 80, scale, 0.8F}).ours, 2.0) << scale;
    }
}

// Where a pixel covers more than the two by two texels that a bilinear filter looks at.
TEST(SpriteAccuracy, SmallFadingCopiesAreNearerThanBilinearOnes) {
    const Bitmap emoji = reference::textPicture("😀", 160);
    for (const float scale : {0.31F, 0.2F, 0.11F}) {
        const Error error = worstEdge({emoji, 80, scale, 0.8F});
        EXPECT_LE(error.ours, error.bilinear) << scale;
    }
}

TEST(SpriteAccuracy, MagnifiedSoftPicture) {
    // Smooth between its texels, as the reference, which shows them as squares, is not: away from
    // steps both agree, and no pixel lies outside the range of the texels around it.
    const Sprite sprite(std::make_shared<Bitmap>(softPicture(40)), 40);
    const Instance instance{70, 70, 3, 1};
    Bitmap drawn = reference::blank({140, 140});
    drawSprites(reference::targetOf(drawn), {0, 0, 140, 140}, sprite, {&instance, 1});
    const Bitmap peer = reference::bilinearSprite(drawn.size, softPicture(40), 40, instance);
    int most = 0;
    for (int y = 14; y < 126; ++y) {
        for (int x = 14; x < 126; ++x) {
            const auto at = std::size_t(y * 140 + x);
            for (int shift = 0; shift < 32; shift += 8) {
                most = std::max(most, std::abs(int(drawn.pixels[at] >> shift & 255) -
                                               int(peer.pixels[at] >> shift & 255)));
            }
        }
    }
    EXPECT_LE(most, 3);
}

TEST(Sprite, HalvesByAveragingTwoByTwoPixels) {
    Bitmap picture = reference::blank({4, 4});
    for (std::size_t i = 0; i < 16; ++i) picture.pixels[i] = std::uint32_t(i * 16) << 24;
    const Sprite sprite(std::make_shared<Bitmap>(picture), 4);
    ASSERT_EQ(sprite.levels().size(), 3U);
    // Rows 0, 16, 32, 48 and 64, 80, 96, 112: means of 40, 72 and, two rows on, 168, 200.
    EXPECT_EQ(sprite.levels()[1]->pixels,
              (std::vector<std::uint32_t>{40U << 24, 72U << 24, 168U << 24, 200U << 24}));
    EXPECT_EQ(sprite.levels()[2]->pixels, std::vector<std::uint32_t>{120U << 24});
}

TEST(Sprite, OddSidesKeepTheMean) {
    Bitmap picture = reference::blank({5, 5});
    picture.pixels[12] = 0xFF000000;
    const Sprite sprite(std::make_shared<Bitmap>(picture), 5);
    ASSERT_EQ(sprite.levels().size(), 4U);
    EXPECT_EQ(sprite.levels()[1]->size, (PixelSize{3, 3}));
    // Of 5/3 pixels a side, the middle one lies wholly in the new middle.
    EXPECT_EQ(sprite.levels()[1]->pixels[4] >> 24, 92U);  // 255 * 9 / 25 = 91.8
    EXPECT_EQ(sprite.levels()[1]->pixels[0], 0U);
}

TEST(Sprite, PicturesThatAreNone) {
    Bitmap oblong = reference::blank({4, 2});
    Bitmap tooShort = reference::blank({4, 4});
    tooShort.pixels.pop_back();
    for (const auto& picture : {oblong, tooShort, Bitmap{}}) {
        EXPECT_TRUE(Sprite(std::make_shared<Bitmap>(picture), 4).levels().empty());
    }
}

}  // namespace
}  // namespace skavlo
