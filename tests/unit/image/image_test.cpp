#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <string>

#include "tests/unit/image/picture_files.h"
#include "tests/unit/image/raster_fixture.h"

namespace skavlo {

namespace {

std::string colourAt(const Bitmap& bitmap, int x, int y) {
    const Pixel pixel = pixelAt(bitmap, x, y);
    const auto high = [](int value) { return value > 200; };
    const auto low = [](int value) { return value < 55; };
    if (pixel.alpha == 0) return "clear";
    if (pixel.alpha != 255) return "translucent";
    if (high(pixel.red) && high(pixel.green) && high(pixel.blue)) return "white";
    if (high(pixel.red) && low(pixel.green) && low(pixel.blue)) return "red";
    if (low(pixel.red) && high(pixel.green) && low(pixel.blue)) return "green";
    if (low(pixel.red) && low(pixel.green) && high(pixel.blue)) return "blue";
    return "other";
}

// The colours in the middles of the four quarters of `rect`, row by row.
std::string quartersOf(const Bitmap& bitmap, const PixelRect& rect) {
    std::string names;
    for (const int y : {1, 3})
        for (const int x : {1, 3})
            names +=
                colourAt(bitmap, rect.x + rect.width * x / 4, rect.y + rect.height * y / 4) + " ";
    return names;
}

// Mean difference over all channels of the pixels where the reference is neither what its left nor
// what its upper neighbour is: the edges.
double meanErrorAtEdges(const Bitmap& actual, const Bitmap& reference) {
    double sum = 0;
    int count = 0;
    const auto differ = [](const Pixel& a, const Pixel& b) {
        return std::abs(a.red - b.red) + std::abs(a.green - b.green) + std::abs(a.blue - b.blue) +
               std::abs(a.alpha - b.alpha);
    };
    for (int y = 1; y < reference.size.height; ++y)
        for (int x = 1; x < reference.size.width; ++x) {
            const Pixel wanted = pixelAt(reference, x, y);
            if (differ(wanted, pixelAt(reference, x - 1, y)) == 0 &&
                differ(wanted, pixelAt(reference, x, y - 1)) == 0)
                continue;
            sum += differ(wanted, pixelAt(actual, x, y));
            count += 4;
        }
    return count == 0 ? 255 : sum / count;
}

}  // namespace

class ImageFormat : public RasterTest, public testing::WithParamInterface<const char*> {};

// 120 x 80 into 60: 60 x 40, ten clear rows above and below.
TEST_P(ImageFormat, IsDecodedFittedAndCentred) {
    const std::string kind = GetParam();
    const std::string png = pathOf("source.png");
    ASSERT_TRUE(saveDrawing(drawQuarters, 120, 80, png, "png"));
    const std::string path = pathOf("file." + kind);
    const bool native = kind == "png" || kind == "jpeg" || kind == "tiff" || kind == "bmp";
    if (native)
        ASSERT_TRUE(saveDrawing(drawQuarters, 120, 80, path, kind));
    else if (!convert(png, path))
        GTEST_SKIP() << "no program here writes " << kind << " files";
    const Answer answer = image(path, 60);
    ASSERT_TRUE(answer);
    EXPECT_EQ(answer->size, (PixelSize{60, 60}));
    ASSERT_EQ(answer->pixels.size(), 3600U);
    EXPECT_EQ(inkOf(*answer), (PixelRect{0, 10, 60, 40}));
    EXPECT_EQ(quartersOf(*answer, {0, 10, 60, 40}), "red green blue white ");
    EXPECT_EQ(colourAt(*answer, 30, 5), "clear");
}

INSTANTIATE_TEST_SUITE_P(All, ImageFormat,
                         testing::Values("png", "jpeg", "gif", "tiff", "bmp", "webp", "avif",
                                         "heic"),
                         [](const auto& test) { return std::string(test.param); });

TEST_F(RasterTest, SvgIsDrawnAtTheBoxsOwnResolution) {
    const std::string path = writeFile(
        "a.svg",
        "<svg xmlns='http://www.w3.org/2000/svg' width='10' height='10' viewBox='0 0 1 1'>"
        "<circle cx='.5' cy='.5' r='.45' fill='#e6331a'/></svg>");
    const auto disc = [](cairo_t* cairo) {
        cairo_arc(cairo, 0.5, 0.5, 0.45, 0, 2 * M_PI);
        cairo_set_source_rgb(cairo, 0xe6 / 255.0, 0x33 / 255.0, 0x1a / 255.0);
        cairo_fill(cairo);
    };
    const Answer answer = image(path, 150);
    ASSERT_TRUE(answer);
    EXPECT_LE(meanErrorAtEdges(*answer, drawReference(disc, 150, 150)), 2);
}

TEST_F(RasterTest, FirstFrameOfAnAnimation) {
    const std::string red = pathOf("1.png");
    const std::string other = pathOf("2.png");
    const auto paintRed = [](cairo_t* cairo) {
        cairo_set_source_rgb(cairo, 1, 0, 0);
        cairo_paint(cairo);
    };
    ASSERT_TRUE(saveDrawing(paintRed, 40, 40, red, "png"));
    ASSERT_TRUE(saveDrawing(drawQuarters, 40, 40, other, "png"));
    for (const std::string kind : {"gif", "webp"}) {
        const std::string path = pathOf("animation." + kind);
        if (!convert(red + "' -delay 5 '" + other, path))
            GTEST_SKIP() << "no program here writes animations";
        const Answer answer = image(path, 40);
        ASSERT_TRUE(answer) << kind;
        EXPECT_EQ(quartersOf(*answer, {0, 0, 40, 40}), "red red red red ") << kind;
    }
}

// What the eight values of the EXIF tag ask for, on red green / blue white.
TEST_F(RasterTest, EmbeddedOrientationIsApplied) {
    const char* const expected[] = {"red green blue white ", "green red white blue ",
                                    "white blue green red ", "blue white red green ",
                                    "red blue green white ", "blue red white green ",
                                    "white green blue red ", "green white red blue "};
    ASSERT_TRUE(saveDrawing(drawQuarters, 320, 160, pathOf("plain.jpeg"), "jpeg"));
    const std::string jpeg = readFile(pathOf("plain.jpeg"));
    for (int orientation = 1; orientation <= 8; ++orientation) {
        const std::string path = writeFile("turned.jpeg", withOrientation(jpeg, orientation));
        const Answer answer = image(path, 64);
        ASSERT_TRUE(answer) << orientation;
        const PixelRect rect =
            orientation < 5 ? PixelRect{0, 16, 64, 32} : PixelRect{16, 0, 32, 64};
        EXPECT_EQ(inkOf(*answer), rect) << orientation;
        EXPECT_EQ(quartersOf(*answer, rect), expected[orientation - 1]) << orientation;
    }
}

TEST_F(RasterTest, SmallImagesGrowToTheBox) {
    ASSERT_TRUE(saveDrawing(drawQuarters, 2, 4, pathOf("small.png"), "png"));
    const Answer answer = image(pathOf("small.png"), 100);
    ASSERT_TRUE(answer);
    EXPECT_EQ(inkOf(*answer), (PixelRect{25, 0, 50, 100}));
    EXPECT_EQ(colourAt(*answer, 26, 1), "red");
    EXPECT_EQ(colourAt(*answer, 73, 98), "white");
}

TEST_F(RasterTest, OnePixelAndOnePixelBox) {
    ASSERT_TRUE(saveDrawing(drawGreyDiscAndBar, 1, 1, pathOf("one.png"), "png"));
    const Answer large = image(pathOf("one.png"), 7);
    ASSERT_TRUE(large);
    EXPECT_EQ(inkOf(*large, 255), (PixelRect{0, 0, 7, 7}));
    ASSERT_TRUE(saveDrawing(drawQuarters, 300, 300, pathOf("many.png"), "png"));
    const Answer small = image(pathOf("many.png"), 1);
    ASSERT_TRUE(small);
    EXPECT_EQ(pixelAt(*small, 0, 0).alpha, 255);
}

// A side never vanishes.
TEST_F(RasterTest, ExtremeAspectKeepsOnePixel) {
    ASSERT_TRUE(saveDrawing(drawGreyDiscAndBar, 5000, 1, pathOf("line.png"), "png"));
    const Answer answer = image(pathOf("line.png"), 100);
    ASSERT_TRUE(answer);
    const PixelRect ink = inkOf(*answer);
    EXPECT_EQ(ink.width, 100);
    EXPECT_EQ(ink.height, 1);
}

TEST_F(RasterTest, ReducedImagesAreTheMeanOfTheirAreas) {
    ASSERT_TRUE(saveDrawing(drawDiscAndBar, 1200, 1200, pathOf("a.png"), "png"));
    for (const int box : {600, 173, 96, 40}) {
        const Answer answer = image(pathOf("a.png"), box);
        ASSERT_TRUE(answer);
        const double error = meanErrorAtEdges(*answer, drawReference(drawDiscAndBar, box, box));
        RecordProperty("png_" + std::to_string(box), std::to_string(error));
        EXPECT_LE(error, 2) << box;
    }
}

TEST_F(RasterTest, ReducedJpegIsTheMeanOfItsAreas) {
    ASSERT_TRUE(saveDrawing(drawGreyDiscAndBar, 1600, 1600, pathOf("a.jpeg"), "jpeg"));
    for (const int box : {800, 400, 173, 96, 40}) {
        const Answer answer = image(pathOf("a.jpeg"), box);
        ASSERT_TRUE(answer);
        const double error = meanErrorAtEdges(*answer, drawReference(drawGreyDiscAndBar, box, box));
        RecordProperty("jpeg_" + std::to_string(box), std::to_string(error));
        EXPECT_LE(error, 2) << box;
    }
}

TEST_F(RasterTest, PixelsArePremultiplied) {
    ASSERT_TRUE(saveDrawing(drawDiscAndBar, 300, 300, pathOf("a.png"), "png"));
    const Answer answer = image(pathOf("a.png"), 90);
    ASSERT_TRUE(answer);
    int translucent = 0;
    for (int y = 0; y < 90; ++y)
        for (int x = 0; x < 90; ++x) {
            const Pixel pixel = pixelAt(*answer, x, y);
            translucent += pixel.alpha > 0 && pixel.alpha < 255;
            ASSERT_LE(std::max({pixel.red, pixel.green, pixel.blue}), pixel.alpha);
        }
    EXPECT_GT(translucent, 100);
}

}  // namespace skavlo
