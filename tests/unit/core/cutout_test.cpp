#include "platform/linux/x11/cutout.h"

#include <gtest/gtest.h>

#include <vector>

#include "platform/linux/x11/x11_outputs.h"

namespace skavlo {
namespace {

class CutoutTest : public testing::Test {
  protected:
    static constexpr PixelSize kSize{8, 3};
    std::vector<std::uint32_t> source = std::vector<std::uint32_t>(24);
    std::vector<std::uint32_t> opaque = std::vector<std::uint32_t>(24);
    Cutout cutout{kSize};

    void set(int x, int y, std::uint32_t pixel) {
        source[static_cast<std::size_t>(y * kSize.width + x)] = pixel;
    }
    void update(PixelRect changed) {
        cutout.update(source.data(), opaque.data(), std::span(&changed, 1));
    }
};

TEST_F(CutoutTest, JoinsNeighbouringPixelsIntoRuns) {
    for (const int x : {1, 2, 3, 6}) set(x, 1, 0xff112233);
    update({0, 0, 8, 3});
    EXPECT_EQ(cutout.runs(), (std::vector<PixelRect>{{1, 1, 3, 1}, {6, 1, 1, 1}}));
}

TEST_F(CutoutTest, KeepsWhatLiesOutsideTheChangedRectangle) {
    for (int x = 0; x < 8; ++x) set(x, 1, 0xffffffff);
    update({0, 0, 8, 3});
    set(3, 1, 0);
    set(4, 1, 0);
    set(0, 1, 0);  // changed, but not said so
    update({3, 0, 2, 3});
    EXPECT_TRUE(cutout.settle());
    EXPECT_EQ(cutout.runs(), (std::vector<PixelRect>{{0, 1, 3, 1}, {5, 1, 3, 1}}));
    set(3, 1, 0xffffffff);
    set(4, 1, 0xffffffff);
    update({3, 0, 2, 3});
    EXPECT_EQ(cutout.runs(), (std::vector<PixelRect>{{0, 1, 8, 1}}));
}

TEST_F(CutoutTest, CutsInAtOnceAndCutsOutWhenToldTo) {
    for (const int x : {1, 2, 3}) set(x, 1, 0xff112233);
    set(6, 2, 0xff445566);
    update({0, 0, 8, 3});
    EXPECT_TRUE(cutout.settled());
    for (const int x : {1, 2}) set(x, 1, 0);
    for (const int x : {4, 6}) set(x, 1, 0xff112233);
    set(6, 2, 0);
    update({0, 0, 8, 3});
    EXPECT_FALSE(cutout.settled());
    EXPECT_EQ(cutout.runs(), (std::vector<PixelRect>{{1, 1, 4, 1}, {6, 1, 1, 1}, {6, 2, 1, 1}}));
    EXPECT_EQ(opaque[8 + 1], 0xff112233U);
    EXPECT_TRUE(cutout.settle());
    EXPECT_EQ(cutout.runs(), (std::vector<PixelRect>{{3, 1, 2, 1}, {6, 1, 1, 1}}));
    EXPECT_FALSE(cutout.settle());
}

TEST_F(CutoutTest, LeavesOutTheFaintestPixelsAndMakesTheOthersOpaque) {
    set(0, 0, 0x17101010);  // alpha 23
    set(1, 0, 0x18181818);  // alpha 24, white
    set(2, 0, 0x80400080);  // half, red 127, blue 255
    update({0, 0, 8, 1});
    EXPECT_EQ(cutout.runs(), (std::vector<PixelRect>{{1, 0, 2, 1}}));
    EXPECT_EQ(opaque[1], 0xffffffffU);
    EXPECT_EQ(opaque[2], 0xff8000ffU);
}

TEST(ScaleFromResources, IsTheFontResolutionOverNinetySix) {
    EXPECT_EQ(scaleFromResources("Xft.dpi:\t192\n"), 2);
    EXPECT_EQ(scaleFromResources("Xcursor.size: 24\nXft.dpi: 144\n"), 1.5);
    EXPECT_EQ(scaleFromResources("Xft.dpi:96"), 1);
}

TEST(ScaleFromResources, IsOneForNonsense) {
    for (const char* text : {"", "Xft.dpi:", "Xft.dpi: abc", "Xft.dpi: 0", "Xft.dpi: 100000",
                             "Xft.dpi: nan", "notXft.dpi: 192\n"}) {
        EXPECT_EQ(scaleFromResources(text), 1) << text;
    }
}

}  // namespace
}  // namespace skavlo
