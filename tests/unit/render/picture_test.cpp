// The star and the composed emoji, and a sheet of everything to look at.
#include <gtest/gtest.h>

#include <algorithm>

#include "overlay/render/render.h"
#include "overlay/render/sprite.h"
#include "reference.h"

namespace skavlo {
namespace {

TEST(Star, IsAPentagramInYellow) {
    for (const int side : {7, 16, 44, 80, 163}) {
        const auto star = starBitmap(side);
        ASSERT_EQ(star->size, (PixelSize{side, side}));
        const auto expected = reference::star({side, side}, 0.96 * side, {1, 204.0 / 255, 0, 1});
        const auto found = reference::difference(expected, *star);
        EXPECT_GT(found.edgePixels, side);
        EXPECT_LE(found.edgeMean, 2.0) << side;
        EXPECT_LE(found.otherMost, 1.0) << side;
    }
}

TEST(Star, OfNoSideIsEmpty) {
    EXPECT_TRUE(starBitmap(0)->pixels.empty());
    EXPECT_TRUE(starBitmap(-3)->pixels.empty());
}

const EmojiDisc kDisc{{0.66, 0.66, 0.66, 0.55}, {1, 1, 1, 0.55}, 5.0 / 55};

TEST(ComposedEmoji, WithoutADiscIsTheFadedLabel) {
    const Bitmap label{{2, 1}, {0xFF804020, 0x80402010}};
    EXPECT_EQ(composeEmoji(label, 1, nullptr)->pixels, label.pixels);
    EXPECT_EQ(composeEmoji(label, 0.5, nullptr)->pixels,
              (std::vector<std::uint32_t>{0x80402010, 0x40201008}));
    EXPECT_EQ(composeEmoji(label, -1, nullptr)->pixels, (std::vector<std::uint32_t>{0, 0}));
    EXPECT_EQ(composeEmoji(label, 7, nullptr)->pixels, label.pixels);
    EXPECT_TRUE(composeEmoji({}, 1, &kDisc)->pixels.empty());
}

TEST(ComposedEmoji, HasTheDiscAboveTheLabel) {
    constexpr int kSide = 88;
    const Bitmap label = reference::textPicture("🔥", kSide);
    const CircleStyle style{kSide, kDisc.borderWidth * kSide, kDisc.fill, kDisc.border};
    auto expected = reference::circle(label.size, style, {kSide / 2.0F, kSide / 2.0F, 1, 1});
    for (std::size_t i = 0; i < label.pixels.size(); ++i) {
        const double kept = 1 - expected.pixels[i][3] / 255;
        for (std::size_t c = 0; c < 4; ++c) {
            const double level = double(label.pixels[i] >> (8 * c) & 255);
            expected.pixels[i][c] += 0.7 * level * kept;
        }
    }
    const auto composed = composeEmoji(label, 0.7, &kDisc);
    const auto found = reference::difference(expected, *composed);
    EXPECT_LE(found.edgeMean, 2.0);
    EXPECT_LE(found.otherMost, 1.5);  // rounded twice: the faded label, then the disc over it
}

void background(Bitmap& sheet) {
    for (int y = 0; y < sheet.size.height; ++y) {
        for (int x = 0; x < sheet.size.width; ++x) {
            const bool light = (x / 16 + y / 16) % 2 == 0;
            sheet.pixels[std::size_t(y) * std::size_t(sheet.size.width) + std::size_t(x)] =
                light ? 0xFF506070 : 0xFF405060;
        }
    }
}

// A row of ever smaller and fainter copies, drawn in that order.
std::vector<Instance> trail(float x, float y, float step) {
    std::vector<Instance> copies;
    for (int i = 0; i < 16; ++i) {
        const float life = float(i) / 16;
        copies.push_back({x, y, 1 - 0.99F * life, 1 - life});
        x += step * (1 - 0.5F * life);
    }
    return copies;
}

TEST(Sheet, IsWrittenForLookingAt) {
    Bitmap sheet = reference::blank({960, 640});
    background(sheet);
    const RenderTarget target = reference::targetOf(sheet);
    const PixelRect all{0, 0, sheet.size.width, sheet.size.height};
    const CircleStyle style{55, 5, kDisc.fill, kDisc.border};
    const CircleStyle opaque{55, 5, {0.9, 0.1, 0.2, 1}, {1, 1, 1, 1}};
    drawCircles(target, all, style, trail(50, 50, 48));
    drawCircles(target, all, opaque, trail(50, 130, 30));
    const Instance large[] = {{820, 500, 4.5F, 1}, {700, 130, 1.5F, 1}, {800, 130, 0.25F, 1}};
    drawCircles(target, all, style, large);
    const Sprite star(starBitmap(160), 80);
    drawSprites(target, all, star, trail(60, 230, 50));
    const Sprite emoji(composeEmoji(reference::textPicture("😀", 160), 1, nullptr), 80);
    drawSprites(target, all, emoji, trail(60, 340, 50));
    const Sprite covered(composeEmoji(reference::textPicture("🔥", 160), 1, &kDisc), 80);
    drawSprites(target, all, covered, trail(60, 450, 40));
    const Instance grown{160, 560, 1.9F, 1};
    drawSprites(target, all, star, {&grown, 1});
    reference::writePng(sheet, SKAVLO_RENDER_SHEET);
    const auto opaquePixels = std::count_if(sheet.pixels.begin(), sheet.pixels.end(),
                                            [](std::uint32_t p) { return p >> 24 == 255; });
    EXPECT_EQ(opaquePixels, std::ptrdiff_t(sheet.pixels.size()));  // over an opaque ground
}

}  // namespace
}  // namespace skavlo
