#include "platform/linux/image/child_image_shrinker.h"

#include <errno.h>
#include <gdk-pixbuf/gdk-pixbuf.h>
#include <signal.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "tests/unit/image/picture_files.h"
#include "tests/unit/image/raster_fixture.h"

namespace skavlo {

namespace {

using namespace std::chrono_literals;

constexpr std::uint64_t kMebibyte = 1 << 20;
// 0.9 and each 0.1 less, as repeated subtraction makes them.
std::vector<double> ninePasses() {
    std::vector<double> factors;
    for (double factor = 0.9; factor > 0.1; factor -= 0.1) factors.push_back(factor);
    return factors;
}

bool hasChildren() {
    return waitpid(-1, nullptr, WNOHANG | __WALL) >= 0 || errno != ECHILD;
}

// A decoded file. Straight alpha.
struct Decoded {
    int width = 0;
    int height = 0;
    bool transparency = false;
    std::vector<std::uint8_t> rgba;
    // "red", "green", "blue", "white", "clear" or "other".
    [[nodiscard]] std::string colourAt(int x, int y) const {
        const std::uint8_t* pixel = rgba.data() + 4 * (y * width + x);
        if (pixel[3] == 0) return "clear";
        if (pixel[3] != 255) return "other";
        std::string high;
        for (int c = 0; c < 3; ++c) {
            if (pixel[c] > 55 && pixel[c] < 200) return "other";
            high += pixel[c] >= 200 ? "rgb"[c] : '-';
        }
        if (high == "r--") return "red";
        if (high == "-g-") return "green";
        if (high == "--b") return "blue";
        return high == "rgb" ? "white" : "other";
    }
    [[nodiscard]] std::string quarters() const {
        std::string names;
        for (const int y : {1, 3})
            for (const int x : {1, 3}) names += colourAt(width * x / 4, height * y / 4) + " ";
        return names;
    }
};

Decoded decode(const std::string& png) {
    Decoded result;
    GdkPixbufLoader* loader = gdk_pixbuf_loader_new_with_type("png", nullptr);
    const bool good = gdk_pixbuf_loader_write(loader, reinterpret_cast<const guchar*>(png.data()),
                                              png.size(), nullptr);
    GdkPixbuf* image = nullptr;
    if (gdk_pixbuf_loader_close(loader, nullptr) && good)
        image = gdk_pixbuf_loader_get_pixbuf(loader);
    if (image != nullptr) {
        result.width = gdk_pixbuf_get_width(image);
        result.height = gdk_pixbuf_get_height(image);
        result.transparency = gdk_pixbuf_get_has_alpha(image);
        GdkPixbuf* rgba = gdk_pixbuf_add_alpha(image, FALSE, 0, 0, 0);
        const auto* bytes = gdk_pixbuf_read_pixels(rgba);
        for (int y = 0; y < result.height; ++y) {
            const auto* row = bytes + std::ptrdiff_t{y} * gdk_pixbuf_get_rowstride(rgba);
            result.rgba.insert(result.rgba.end(), row, row + std::ptrdiff_t{4} * result.width);
        }
        g_object_unref(rgba);
    }
    g_object_unref(loader);
    return result;
}

// Nothing can be made smaller than its number of pixels suggests.
std::string noisePng(const std::string& path, int width, int height) {
    std::mt19937 random(3);
    std::vector<guchar> bytes(static_cast<std::size_t>(width) * static_cast<std::size_t>(height) *
                              3);
    for (guchar& byte : bytes) byte = static_cast<guchar>(random());
    GdkPixbuf* image = gdk_pixbuf_new_from_data(bytes.data(), GDK_COLORSPACE_RGB, FALSE, 8, width,
                                                height, width * 3, nullptr, nullptr);
    gdk_pixbuf_save(image, path.c_str(), "png", nullptr, nullptr);
    g_object_unref(image);
    return path;
}

}  // namespace

class ShrinkerTest : public RasterTest {
  protected:
    std::string shrink(ImageShrinker& shrinker, const std::string& path,
                       const std::vector<double>& factors, std::uint64_t limit) {
        int calls = 0;
        std::string answer;
        shrinker.shrinkToPng(path, factors, limit, [&](std::string png) {
            ++calls;
            EXPECT_TRUE(loop_.isMainThread());
            answer = std::move(png);
        });
        EXPECT_EQ(calls, 0) << "completed from within the request";
        EXPECT_TRUE(runUntil([&] { return calls > 0; })) << "no completion";
        loop_.context().poll();
        EXPECT_EQ(calls, 1);
        EXPECT_FALSE(hasChildren());
        return answer;
    }
    std::string shrink(const std::string& path, const std::vector<double>& factors = ninePasses(),
                       std::uint64_t limit = kMebibyte) {
        ChildImageShrinker shrinker(loop_, SKAVLO_RASTER);
        return shrink(shrinker, path, factors, limit);
    }
    // The answer of a program of this body in place of the real one.
    std::string answerOf(const std::string& body, ShrinkerLimits limits = {}) {
        ChildImageShrinker shrinker(loop_, writeProgram("fake", body), limits);
        return shrink(shrinker, writeFile("any", "any"), {0.5}, kMebibyte);
    }
    std::string saved(const Drawing& drawing, int width, int height, const std::string& kind) {
        const std::string path = pathOf("drawing." + kind);
        EXPECT_TRUE(saveDrawing(drawing, width, height, path, kind));
        return path;
    }
};

class ShrunkFormat : public ShrinkerTest, public testing::WithParamInterface<const char*> {};

TEST_P(ShrunkFormat, IsDecodedAndScaled) {
    const std::string kind = GetParam();
    const bool native = kind == "png" || kind == "jpeg" || kind == "tiff" || kind == "bmp";
    const std::string png = saved(drawQuarters, 202, 120, "png");
    const std::string path = native ? saved(drawQuarters, 202, 120, kind) : pathOf("file." + kind);
    if (!native && !convert(png, path)) GTEST_SKIP() << "no program here writes " << kind;
    const Decoded image = decode(shrink(path, {0.5}));
    EXPECT_EQ(image.width, 101);
    EXPECT_EQ(image.height, 60);
    EXPECT_EQ(image.quarters(), "red green blue white ");
    // A marker's picture comes from the same decoder.
    const Answer marker = this->image(path, 60);
    ASSERT_TRUE(marker);
    EXPECT_EQ(inkOf(*marker), (PixelRect{0, 12, 60, 36}));
}

INSTANTIATE_TEST_SUITE_P(All, ShrunkFormat,
                         testing::Values("png", "jpeg", "gif", "tiff", "bmp", "webp", "avif",
                                         "heic"),
                         [](const auto& test) { return std::string(test.param); });

// By the encoders made for these formats, not by the one program that writes them all.
TEST_F(ShrinkerTest, FilesOfOtherEncodersAreRead) {
    const std::string png = saved(drawQuarters, 202, 120, "png");
    const std::string avif = pathOf("a.avif");
    const std::string heic = pathOf("a.heic");
    const std::string encode = "exec >/dev/null 2>&1; avifenc '" + png + "' '" + avif +
                               "' && heif-enc '" + png + "' -o '" + heic + "'";
    if (std::system(encode.c_str()) != 0) GTEST_SKIP() << "avifenc or heif-enc is missing";
    for (const std::string& path : {avif, heic}) {
        const Decoded image = decode(shrink(path, {0.5}));
        EXPECT_EQ(image.width, 101) << path;
        EXPECT_EQ(image.height, 60) << path;
        EXPECT_EQ(image.quarters(), "red green blue white ") << path;
    }
}

TEST_F(ShrinkerTest, SvgHasItsOwnSize) {
    const Decoded image =
        decode(shrink(writeFile("a.svg",
                                "<svg xmlns='http://www.w3.org/2000/svg' width='200' height='100'>"
                                "<rect width='100' height='100' fill='#f00'/></svg>"),
                      {0.9}));
    EXPECT_EQ(image.width, 180);
    EXPECT_EQ(image.height, 90);
    EXPECT_EQ(image.quarters(), "red clear red clear ");
}

TEST_F(ShrinkerTest, EmbeddedOrientationIsApplied) {
    const char* const expected[] = {"red green blue white ", "green red white blue ",
                                    "white blue green red ", "blue white red green ",
                                    "red blue green white ", "blue red white green ",
                                    "white green blue red ", "green white red blue "};
    const std::string jpeg = readFile(saved(drawQuarters, 300, 160, "jpeg"));
    for (int orientation = 1; orientation <= 8; ++orientation) {
        const Decoded image =
            decode(shrink(writeFile("turned.jpeg", withOrientation(jpeg, orientation)), {0.9}));
        EXPECT_EQ(image.width, orientation < 5 ? 270 : 144) << orientation;
        EXPECT_EQ(image.height, orientation < 5 ? 144 : 270) << orientation;
        EXPECT_EQ(image.quarters(), expected[orientation - 1]) << orientation;
    }
}

// Premultiplied, because what lies under nothing may have any colour.
TEST_F(ShrinkerTest, TransparencyIsKeptAndReductionIsTheMeanOfAreas) {
    const std::string path = saved(drawDiscAndBar, 600, 600, "png");
    for (const double factor : {0.9, 0.7, 0.5, 0.2}) {
        const Decoded image = decode(shrink(path, {factor}));
        const int side = static_cast<int>(std::ceil(600 * factor));
        ASSERT_EQ(image.width, side);
        EXPECT_TRUE(image.transparency);
        EXPECT_EQ(image.colourAt(0, 0), "clear");
        const Bitmap reference = drawReference(drawDiscAndBar, side, side);
        double sum = 0;
        for (std::size_t i = 0; i < reference.pixels.size(); ++i) {
            const std::uint8_t* pixel = image.rgba.data() + 4 * i;
            for (const int c : {0, 1, 2, 3}) {
                const int actual = c == 3 ? pixel[3] : (pixel[c] * pixel[3] + 127) / 255;
                const int shift = c == 3 ? 24 : 16 - 8 * c;
                sum += std::abs(actual - static_cast<int>(reference.pixels[i] >> shift & 0xff));
            }
        }
        EXPECT_LE(sum / static_cast<double>(4 * reference.pixels.size()), 0.5) << factor;
    }
}

TEST_F(ShrinkerTest, SidesAreRoundedUpAndNeverVanish) {
    const Decoded line = decode(shrink(saved(drawGreyDiscAndBar, 301, 1, "png"), {0.2}));
    EXPECT_EQ(line.width, 61);
    EXPECT_EQ(line.height, 1);
    // The last of the nine lies just above a tenth.
    const Decoded tenth =
        decode(shrink(saved(drawGreyDiscAndBar, 10, 20, "png"), {ninePasses().back()}));
    EXPECT_EQ(tenth.width, 2);
    EXPECT_EQ(tenth.height, 3);
}

// Each pass starts from the picked image and the first that fits ends them, so the answer to all
// nine is that of the largest factor whose own file is short enough.
TEST_F(ShrinkerTest, TheFirstThatFitsIsTaken) {
    const std::string path = noisePng(pathOf("noise.png"), 400, 300);
    std::vector<std::string> alone;
    for (const double factor : ninePasses()) {
        alone.push_back(shrink(path, {factor}));
        const Decoded image = decode(alone.back());
        EXPECT_EQ(image.width, static_cast<int>(std::ceil(400 * factor)));
        EXPECT_EQ(image.height, static_cast<int>(std::ceil(300 * factor)));
    }
    ASSERT_EQ(alone.size(), 9U);
    for (std::size_t pass = 0; pass < alone.size(); ++pass) {
        EXPECT_EQ(shrink(path, ninePasses(), alone[pass].size()), alone[pass]) << pass;
        const std::size_t next = std::min(pass + 1, alone.size() - 1);
        EXPECT_EQ(shrink(path, ninePasses(), alone[pass].size() - 1), alone[next]) << pass;
    }
}

TEST_F(ShrinkerTest, TheLastOneCountsThoughItIsTooLong) {
    const std::string path = noisePng(pathOf("noise.png"), 300, 300);
    const std::string png = shrink(path, {0.9, 0.8}, 10);
    EXPECT_EQ(decode(png).width, 240);
    EXPECT_GT(png.size(), 10U);
}

TEST_F(ShrinkerTest, FiftyMegapixelsFit) {
    const std::string turned = writeFile(
        "turned.jpeg", withOrientation(readFile(saved(drawQuarters, 8660, 5774, "jpeg")), 6));
    std::filesystem::remove(pathOf("drawing.jpeg"));
    const std::string png = shrink(turned, {0.9, 0.3}, 20'000);
    const Decoded image = decode(png);
    EXPECT_EQ(image.width, 1733);
    EXPECT_EQ(image.height, 2598);
    EXPECT_EQ(image.quarters(), "blue red white green ");
}

TEST_F(ShrinkerTest, WhatIsNoImageIsEmpty) {
    std::mt19937 random(42);
    std::string garbage(2 * kMebibyte, '\0');
    for (char& byte : garbage) byte = static_cast<char>(random());
    EXPECT_EQ(shrink(writeFile("garbage.png", garbage)), "");
    EXPECT_EQ(shrink(writeFile("empty.png", "")), "");
    const std::string png = readFile(saved(drawQuarters, 200, 200, "png"));
    EXPECT_EQ(shrink(writeFile("part.png", png.substr(0, png.size() / 2))), "");
}

TEST_F(ShrinkerTest, BombsAreEmpty) {
    EXPECT_EQ(shrink(writeFile("bomb.png", hugePng(30000, 30000))), "");
    EXPECT_EQ(shrink(writeFile("wide.svg",
                               "<svg xmlns='http://www.w3.org/2000/svg' width='100000' "
                               "height='50000'><rect width='100000' height='50000'/></svg>")),
              "");
}

TEST_F(ShrinkerTest, WhatCannotBeReadIsEmpty) {
    EXPECT_EQ(shrink(pathOf("missing.png")), "");
    EXPECT_EQ(shrink(directory_), "");
    EXPECT_EQ(shrink("/dev/zero"), "");
    ASSERT_EQ(mkfifo(pathOf("fifo").c_str(), 0600), 0);
    EXPECT_EQ(shrink(pathOf("fifo")), "");
    const std::string image = saved(drawQuarters, 20, 20, "png");
    ShrinkerLimits limits;
    limits.imageFileBytes = 10;
    ChildImageShrinker small(loop_, SKAVLO_RASTER, limits);
    EXPECT_EQ(shrink(small, image, {0.5}, kMebibyte), "");
    ChildImageShrinker none(loop_, "/nonexistent");
    EXPECT_EQ(shrink(none, image, {0.5}, kMebibyte), "");
}

TEST_F(ShrinkerTest, SenselessRequestsAreEmpty) {
    const std::string image = saved(drawQuarters, 20, 20, "png");
    for (const std::vector<double>& factors : {std::vector<double>{},
                                               {0.0},
                                               {-1.0},
                                               {1.1},
                                               {std::nan("")},
                                               {HUGE_VAL},
                                               std::vector<double>(17, 0.5)})
        EXPECT_EQ(shrink(image, factors), "");
    EXPECT_EQ(shrink(image, {0.5}, 0), "");
    EXPECT_NE(shrink(image, std::vector<double>(16, 1.0)), "");
}

TEST_F(ShrinkerTest, OfWhatTheChildSaysOnlyWholePngFilesCount) {
    const std::string png = "printf '\\211PNG\\r\\n\\032\\nrest'";
    EXPECT_EQ(answerOf(png), "\x89PNG\r\n\x1a\nrest");
    EXPECT_EQ(answerOf(png + "; exit 1"), "");
    EXPECT_EQ(answerOf(png + "; kill -SEGV $$"), "");
    EXPECT_EQ(answerOf("exit 0"), "");
    EXPECT_EQ(answerOf("printf 'This is not what was asked for.'"), "");
    EXPECT_EQ(answerOf("printf '\\211PN'"), "");
    ShrinkerLimits limits;
    limits.answerBytes = 100'000;
    EXPECT_EQ(answerOf(png + "; exec cat /dev/zero", limits), "");
}

TEST_F(ShrinkerTest, AChildThatTakesTooLongIsEmpty) {
    ShrinkerLimits limits;
    limits.timeout = 50ms;
    EXPECT_EQ(answerOf("exec sleep 1000", limits), "");
    EXPECT_EQ(answerOf("exec >&-; exec sleep 1000", limits), "");
}

TEST_F(ShrinkerTest, RequestsAreAnsweredInTheirOrder) {
    const std::string image = saved(drawQuarters, 20, 20, "png");
    ChildImageShrinker shrinker(loop_, SKAVLO_RASTER);
    std::vector<int> widths;
    for (const double factor : {0.5, 1.0, 0.25})
        shrinker.shrinkToPng(image, {factor}, kMebibyte,
                             [&](const std::string& png) { widths.push_back(decode(png).width); });
    EXPECT_TRUE(runUntil([&] { return widths.size() == 3; }));
    EXPECT_EQ(widths, (std::vector{10, 20, 5}));
}

// One answered and not yet delivered, one under way, one waiting.
TEST_F(ShrinkerTest, DestructionKillsTheChildAndCallsNothing) {
    const std::string fifo = pathOf("begun");
    ASSERT_EQ(mkfifo(fifo.c_str(), 0600), 0);
    int calls = 0;
    {
        ChildImageShrinker shrinker(loop_,
                                    writeProgram("fake", "echo $$ >" + fifo + "; exec sleep 1000"));
        shrinker.shrinkToPng(pathOf("missing"), {0.5}, 1, [&](const std::string&) { ++calls; });
        const std::string any = writeFile("any", "any");
        shrinker.shrinkToPng(any, {0.5}, 1, [&](const std::string&) { ++calls; });
        shrinker.shrinkToPng(any, {0.5}, 1, [&](const std::string&) { ++calls; });
        EXPECT_NE(readFile(fifo), "");
    }
    EXPECT_FALSE(hasChildren());
    loop_.context().poll();
    EXPECT_EQ(calls, 0);
}

TEST_F(ShrinkerTest, AnUnusedShrinkerHasNoThread) {
    const auto threads = [] {
        const std::filesystem::directory_iterator all("/proc/self/task");
        return std::distance(begin(all), end(all));
    };
    const auto before = threads();
    const ChildImageShrinker shrinker(loop_, SKAVLO_RASTER);
    EXPECT_EQ(threads(), before);
}

}  // namespace skavlo
