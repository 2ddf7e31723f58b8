#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cmath>
#include <filesystem>
#include <random>
#include <string>

#include "tests/unit/image/picture_files.h"
#include "tests/unit/image/raster_fixture.h"

namespace skavlo {

TEST_F(RasterTest, LargeImageWithinTheLimitIsShown) {
    const Answer answer = image(writeFile("large.png", hugePng(9000, 9000)), 64);
    ASSERT_TRUE(answer);
    EXPECT_EQ(inkOf(*answer, 255), (PixelRect{0, 0, 64, 64}));
}

TEST_F(RasterTest, DecompressionBombHasNoPicture) {
    const std::string bomb = hugePng(30000, 30000);
    ASSERT_LT(bomb.size(), 2'000'000U);
    EXPECT_FALSE(image(writeFile("bomb.png", bomb), 64));
}

TEST_F(RasterTest, AnnouncedSizeIsRefusedBeforePixelsAreDecoded) {
    for (const int side : {100'000, 0x7fffffff}) {
        std::string png = hugePng(8, 8);
        for (int byte = 0; byte < 4; ++byte) {
            png[static_cast<std::size_t>(16 + byte)] = static_cast<char>(side >> (24 - 8 * byte));
            png[static_cast<std::size_t>(20 + byte)] = static_cast<char>(side >> (24 - 8 * byte));
        }
        EXPECT_FALSE(image(writeFile("liar.png", png), 64));
    }
}

TEST_F(RasterTest, TruncatedFilesHaveNoPicture) {
    for (const std::string kind : {"png", "jpeg", "tiff", "bmp"}) {
        ASSERT_TRUE(saveDrawing(drawQuarters, 200, 200, pathOf("whole"), kind));
        EXPECT_TRUE(image(pathOf("whole"), 64));
        const std::string whole = readFile(pathOf("whole"));
        for (const std::size_t length : {whole.size() / 2, std::size_t{40}, std::size_t{3}}) {
            if (kind == "jpeg" && length > 40) continue;
            EXPECT_FALSE(image(writeFile("part", whole.substr(0, length)), 64))
                << kind << " " << length;
        }
    }
}

TEST_F(RasterTest, TruncatedWebpHasNoPicture) {
    ASSERT_TRUE(saveDrawing(drawDiscAndBar, 200, 200, pathOf("whole.png"), "png"));
    if (!convert(pathOf("whole.png"), pathOf("whole.webp")))
        GTEST_SKIP() << "no program here writes webp files";
    EXPECT_TRUE(image(pathOf("whole.webp"), 64));
    const std::string whole = readFile(pathOf("whole.webp"));
    for (const std::size_t length : {whole.size() - 2, whole.size() / 2, std::size_t{60}})
        EXPECT_FALSE(image(writeFile("part", whole.substr(0, length)), 64)) << length;
}

TEST_F(RasterTest, TruncatedJpegShowsItsBeginning) {
    ASSERT_TRUE(saveDrawing(drawQuarters, 200, 200, pathOf("whole"), "jpeg"));
    const std::string whole = readFile(pathOf("whole"));
    const Answer answer = image(writeFile("part", whole.substr(0, whole.size() * 3 / 4)), 64);
    ASSERT_TRUE(answer);
    EXPECT_GT(pixelAt(*answer, 10, 5).red, 200);
    EXPECT_LT(pixelAt(*answer, 10, 5).green, 55);
    EXPECT_LT(pixelAt(*answer, 10, 5).blue, 55);
}

// Whatever comes of damaged files: one answer, and the next request works.
TEST_F(RasterTest, DamagedFilesAreSurvived) {
    std::mt19937 random(7);
    for (const std::string kind : {"png", "jpeg", "tiff", "bmp"}) {
        ASSERT_TRUE(saveDrawing(drawDiscAndBar, 64, 64, pathOf("whole"), kind));
        const std::string whole = readFile(pathOf("whole"));
        for (int round = 0; round < 10; ++round) {
            std::string damaged = whole;
            for (int hit = 0; hit < 20; ++hit)
                damaged[random() % damaged.size()] = static_cast<char>(random());
            const Answer answer = image(writeFile("damaged", damaged), 32);
            if (answer) {
                EXPECT_EQ(answer->pixels.size(), 1024U);
            }
        }
        EXPECT_TRUE(image(pathOf("whole"), 32));
    }
}

TEST_F(RasterTest, GarbageHasNoPicture) {
    std::mt19937 random(42);
    std::string garbage(200'000, '\0');
    for (char& byte : garbage) byte = static_cast<char>(random());
    EXPECT_FALSE(image(writeFile("garbage.png", garbage), 64));
    EXPECT_FALSE(image(writeFile("text.png", "This is no picture.\n"), 64));
    EXPECT_FALSE(image(writeFile("empty.png", ""), 64));
}

TEST_F(RasterTest, MonstrousSvgHasOneOutcome) {
    std::string laughs = "<!DOCTYPE svg [<!ENTITY a0 \"ha\">";
    for (int level = 1; level < 30; ++level) {
        const std::string inner = "&a" + std::to_string(level - 1) + ";";
        laughs += "<!ENTITY a" + std::to_string(level) + " \"" + inner + inner + inner + "\">";
    }
    const std::string svg = "<svg xmlns='http://www.w3.org/2000/svg' width='9' height='9'>";
    EXPECT_FALSE(
        image(writeFile("laughs.svg", laughs + "]>" + svg + "<text>&a29;</text></svg>"), 64));
    std::string deep = svg;
    for (int level = 0; level < 100'000; ++level) deep += "<g>";
    EXPECT_FALSE(image(writeFile("deep.svg", deep), 64));
    const Answer wide =
        image(writeFile("wide.svg",
                        "<svg xmlns='http://www.w3.org/2000/svg' width='100000' "
                        "height='50000'><rect width='100000' height='50000'/></svg>"),
              64);
    ASSERT_TRUE(wide);
    EXPECT_EQ(inkOf(*wide, 255), (PixelRect{0, 16, 64, 32}));
}

// Neither a file nor the network is looked into for what the picture refers to.
TEST_F(RasterTest, SvgSeesNoOtherFile) {
    ASSERT_TRUE(saveDrawing(drawQuarters, 20, 20, pathOf("a.png"), "png"));
    chmod(directory_.c_str(), 0755);
    const Answer answer =
        image(writeFile("a.svg",
                        "<svg xmlns='http://www.w3.org/2000/svg' width='20' height='20'>"
                        "<image width='20' height='20' href='file://" +
                            pathOf("a.png") + "'/></svg>"),
              20);
    ASSERT_TRUE(answer);
    EXPECT_TRUE(inkOf(*answer).empty());
}

TEST_F(RasterTest, OnlyRegularFilesAreRead) {
    EXPECT_FALSE(image(directory_, 64));
    EXPECT_FALSE(image(pathOf("missing.png"), 64));
    EXPECT_FALSE(image("", 64));
    EXPECT_FALSE(image("/dev/zero", 64));
    ASSERT_EQ(mkfifo(pathOf("fifo").c_str(), 0600), 0);
    EXPECT_FALSE(image(pathOf("fifo"), 64));
}

TEST_F(RasterTest, FilesBeyondTheByteLimitAreNotRead) {
    ASSERT_TRUE(saveDrawing(drawQuarters, 20, 20, pathOf("a.png"), "png"));
    EXPECT_TRUE(image(pathOf("a.png"), 20));
    std::filesystem::resize_file(pathOf("a.png"), 64 * 1024 * 1024 + 1);
    EXPECT_FALSE(image(pathOf("a.png"), 20));
}

TEST_F(RasterTest, FileWithoutPermissionHasNoPicture) {
    ASSERT_TRUE(saveDrawing(drawQuarters, 20, 20, pathOf("a.png"), "png"));
    ASSERT_EQ(chmod(pathOf("a.png").c_str(), 0), 0);
    constexpr uid_t kNobody = 65534;
    const uid_t before = geteuid();
    // The file is opened within the request.
    if (before == 0) {
        ASSERT_EQ(chmod(directory_.c_str(), 0755), 0);
        ASSERT_EQ(seteuid(kNobody), 0);
    }
    const Answer answer = image(pathOf("a.png"), 20);
    ASSERT_EQ(seteuid(before), 0);
    EXPECT_FALSE(answer);
}

TEST_F(RasterTest, BoxesAndFontsOutOfRangeHaveNoPicture) {
    ASSERT_TRUE(saveDrawing(drawQuarters, 20, 20, pathOf("a.png"), "png"));
    for (const int box : {0, -1, 4097, 0x7fffffff}) {
        EXPECT_FALSE(image(pathOf("a.png"), box)) << box;
        EXPECT_FALSE(text("a", box, 20)) << box;
    }
    EXPECT_TRUE(image(pathOf("a.png"), 4096));
    for (const double font : {0.0, -1.0, 4097.0, std::nan(""), HUGE_VAL})
        EXPECT_FALSE(text("a", 20, font)) << font;
}

}  // namespace skavlo
