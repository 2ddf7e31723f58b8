#include "tools/picture/animated_png.h"

#include <gtest/gtest.h>
#include <png.h>
#include <unistd.h>
#include <zlib.h>

#include <cstdio>
#include <fstream>

#include "tools/picture/png.h"

namespace skavlo {
namespace {

Bitmap filled(PixelSize size, std::uint32_t colour) {
    Bitmap bitmap{size, {}};
    bitmap.pixels.assign(static_cast<std::size_t>(size.width) * size.height, colour);
    return bitmap;
}

struct Chunk {
    std::string type;
    std::string contents;
};

std::uint32_t number(const std::string& bytes, std::size_t place, int length = 4) {
    std::uint32_t value = 0;
    for (int i = 0; i < length; ++i) {
        value = value << 8 | static_cast<unsigned char>(bytes.at(place + i));
    }
    return value;
}

std::vector<Chunk> chunksOf(const std::string& file) {
    std::vector<Chunk> chunks;
    for (std::size_t place = 8; place < file.size();) {
        const std::size_t length = number(file, place);
        chunks.push_back({file.substr(place + 4, 4), file.substr(place + 8, length)});
        const std::string checked = file.substr(place + 4, length + 4);
        EXPECT_EQ(number(file, place + 8 + length),
                  crc32(0, reinterpret_cast<const Bytef*>(checked.data()),
                        static_cast<uInt>(checked.size())))
            << chunks.back().type;
        place += length + 12;
    }
    return chunks;
}

std::string written(const AnimatedPng& animation) {
    const std::string path = testing::TempDir() + "skavlo-animation-" + std::to_string(getpid());
    const auto error = animation.write(path);
    EXPECT_FALSE(error) << error->message;
    std::ifstream file(path, std::ios::binary);
    std::string bytes((std::istreambuf_iterator<char>(file)), {});
    std::remove(path.c_str());
    return bytes;
}

std::vector<std::uint8_t> decoded(const std::string& file) {
    png_image image = {};
    image.version = PNG_IMAGE_VERSION;
    EXPECT_NE(png_image_begin_read_from_memory(&image, file.data(), file.size()), 0);
    image.format = PNG_FORMAT_RGB;
    std::vector<std::uint8_t> bytes(PNG_IMAGE_SIZE(image));
    EXPECT_NE(png_image_finish_read(&image, nullptr, bytes.data(), 0, nullptr), 0);
    return bytes;
}

TEST(Png, keepsColours) {
    EXPECT_EQ(decoded(encodePng(filled({2, 1}, 0xFF123456))),
              (std::vector<std::uint8_t>{0x12, 0x34, 0x56, 0x12, 0x34, 0x56}));
}

TEST(Png, straightensPremultipliedColours) {
    const Bitmap bitmap{{4, 1}, {0x80402000, 0xFF0A0B0C, 0x00000000, 0x01010001}};
    const std::string expected(
        "\x80\x40\x00\x80"
        "\x0A\x0B\x0C\xFF"
        "\0\0\0\0"
        "\xFF\0\xFF\x01",
        16);
    EXPECT_EQ(straightColours(bitmap), expected);
}

// Whatever a renderer can draw survives the way through straight colours and back.
TEST(Png, straightColoursLoseNothing) {
    for (std::uint32_t alpha = 0; alpha < 256; ++alpha) {
        for (std::uint32_t colour = 0; colour <= alpha; ++colour) {
            const std::string straight = straightColours({{1, 1}, {alpha << 24 | colour << 8}});
            const std::uint32_t back = static_cast<unsigned char>(straight[1]) * alpha;
            ASSERT_EQ((back + 127) / 255, colour) << "alpha " << alpha;
        }
    }
}

TEST(Png, keepsTransparency) {
    png_image image = {};
    image.version = PNG_IMAGE_VERSION;
    const std::string file = encodePng({{1, 1}, {0x80402000}}, Transparency::kept);
    ASSERT_NE(png_image_begin_read_from_memory(&image, file.data(), file.size()), 0);
    EXPECT_EQ(image.format & PNG_FORMAT_FLAG_ALPHA, PNG_FORMAT_FLAG_ALPHA);
    image.format = PNG_FORMAT_RGBA;
    std::vector<std::uint8_t> bytes(PNG_IMAGE_SIZE(image));
    ASSERT_NE(png_image_finish_read(&image, nullptr, bytes.data(), 0, nullptr), 0);
    EXPECT_EQ(bytes, (std::vector<std::uint8_t>{0x80, 0x40, 0, 0x80}));
}

TEST(Png, namesTheFileItCannotWrite) {
    const auto error = writePng("/nonexistent/picture.png", filled({1, 1}, 0));
    ASSERT_TRUE(error);
    EXPECT_EQ(error->message, "cannot write /nonexistent/picture.png: No such file or directory");
}

TEST(Difference, isTheSmallestRectangle) {
    const Bitmap left = filled({8, 6}, 1);
    Bitmap right = left;
    EXPECT_TRUE(difference(left, right).empty());
    right.pixels[2 * 8 + 5] = 2;
    EXPECT_EQ(difference(left, right), (PixelRect{5, 2, 1, 1}));
    right.pixels[4 * 8 + 1] = 2;
    EXPECT_EQ(difference(left, right), (PixelRect{1, 2, 5, 3}));
    EXPECT_EQ(difference(left, filled({8, 6}, 3)), (PixelRect{0, 0, 8, 6}));
}

TEST(AnimatedPng, isAPngOfItsFirstFrame) {
    AnimatedPng animation;
    animation.add(filled({3, 2}, 0xFF010203), 40);
    animation.add(filled({3, 2}, 0xFF000000), 40);
    EXPECT_EQ(decoded(written(animation)), decoded(encodePng(filled({3, 2}, 0xFF010203))));
}

TEST(AnimatedPng, storesChangesAndLoops) {
    Bitmap picture = filled({10, 10}, 0xFF000000);
    AnimatedPng animation;
    animation.add(picture, 40);
    animation.add(picture, 50);  // the same: shown longer
    picture.pixels[3 * 10 + 7] = 0xFFFF0000;
    animation.add(picture, 60);
    ASSERT_EQ(animation.frames(), 2U);

    const auto chunks = chunksOf(written(animation));
    std::string types;
    for (const Chunk& chunk : chunks) {
        types += chunk.type + " ";
    }
    ASSERT_EQ(types, "IHDR acTL fcTL IDAT fcTL fdAT IEND ");
    EXPECT_EQ(number(chunks[1].contents, 0), 2U);  // frames
    EXPECT_EQ(number(chunks[1].contents, 4), 0U);  // plays: without end
    EXPECT_EQ(number(chunks[2].contents, 0), 0U);  // sequence numbers run through both kinds
    EXPECT_EQ(number(chunks[2].contents, 20, 2), 90U);
    EXPECT_EQ(number(chunks[4].contents, 0), 1U);
    EXPECT_EQ(number(chunks[4].contents, 4), 1U);   // width
    EXPECT_EQ(number(chunks[4].contents, 8), 1U);   // height
    EXPECT_EQ(number(chunks[4].contents, 12), 7U);  // x
    EXPECT_EQ(number(chunks[4].contents, 16), 3U);  // y
    EXPECT_EQ(number(chunks[4].contents, 20, 2), 60U);
    EXPECT_EQ(number(chunks[4].contents, 22, 2), 1000U);
    EXPECT_EQ(number(chunks[5].contents, 0), 2U);
}

TEST(AnimatedPng, holdsTransparencyAndTicks) {
    AnimatedPng animation({Transparency::kept, 60, true});
    animation.add(filled({2, 2}, 0x80402000), 1);
    animation.add(filled({2, 2}, 0), 2);
    const auto chunks = chunksOf(written(animation));
    ASSERT_EQ(chunks.size(), 7U);
    EXPECT_EQ(number(chunks[0].contents, 9, 1), 6U);  // true colour with alpha
    EXPECT_EQ(number(chunks[4].contents, 20, 2), 2U);
    EXPECT_EQ(number(chunks[4].contents, 22, 2), 60U);
    EXPECT_EQ(number(chunks[4].contents, 24, 2), 0U);  // replaces what it covers, and stays
}

TEST(AnimatedPng, showsAStillLongerThanOneFrameCan) {
    AnimatedPng animation;
    animation.add(filled({2, 2}, 0), 60'000);
    animation.add(filled({2, 2}, 0), 6'000);
    const auto chunks = chunksOf(written(animation));
    ASSERT_EQ(chunks.size(), 7U);
    EXPECT_EQ(number(chunks[2].contents, 20, 2), 60'000U);
    EXPECT_EQ(number(chunks[4].contents, 4), 1U);  // one pixel wide
    EXPECT_EQ(number(chunks[4].contents, 20, 2), 6'000U);
}

TEST(AnimatedPng, withoutFramesIsAnError) {
    EXPECT_TRUE(AnimatedPng().write(testing::TempDir() + "never-written.png"));
}

}  // namespace
}  // namespace skavlo
