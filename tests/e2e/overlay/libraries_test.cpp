// What the overlay's process loads: nothing that reads pictures or fonts, for it is root's.
#include <gmock/gmock.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <filesystem>
#include <fstream>
#include <set>
#include <string_view>

#include "platform/linux/image/raster_child.h"
#include "platform/linux/notify/socket_notifications.h"
#include "tests/e2e/overlay/overlay_rig.h"
#include "tools/picture/png.h"

namespace skavlo {
namespace {

using testing::HasSubstr;
using testing::IsEmpty;

// The names of the files in a process's memory; empty: they cannot be seen.
std::set<std::string> filesIn(pid_t process) {
    std::set<std::string> names;
    std::ifstream maps("/proc/" + std::to_string(process) + "/maps");
    for (std::string line; std::getline(maps, line);) {
        if (const auto path = line.find('/'); path != std::string::npos)
            names.insert(line.substr(line.rfind('/') + 1));
    }
    return names;
}

bool holds(const std::set<std::string>& names, std::string_view part) {
    return std::ranges::any_of(
        names, [&](const std::string& name) { return name.find(part) != std::string::npos; });
}

// Parts of the names of decoders, their loaders, font code and fonts.
constexpr std::array kForbidden{
    "pixbuf", "png",      "jpeg",     "jpg",     "webp",   "tiff",     "rsvg",   "avif",
    "heif",   "gif",      "jxl",      "pango",   "cairo",  "freetype", "font",   "ttf",
    "otf",    "harfbuzz", "graphite", "fribidi", "libxml", "libexif",  "pixman", "skavlo-raster"};

class OverlayLibraries : public OverlayRig {
  protected:
    static std::string imageFile() { return testing::TempDir() + "skavlo-libraries.png"; }
    ~OverlayLibraries() override { std::filesystem::remove(imageFile()); }
    OverlayLibraries() = default;
    OverlayLibraries(const OverlayLibraries&) = delete;
    OverlayLibraries& operator=(const OverlayLibraries&) = delete;

    void expectNoDecoderAndNoFont() {
        const auto names = filesIn(overlay().pid());
        ASSERT_THAT(names, testing::Contains("skavlo-hud.so"));
        for (const char* part : kForbidden) EXPECT_FALSE(holds(names, part)) << part;
    }
    // Touches once for every look at the screen, for a reload is seen by the next marker only.
    void touchUntil(const std::function<bool(std::uint32_t)>& wanted, const char* what) {
        captureUntil(
            [&](const Bitmap& screen) {
                if (wanted(at(screen, 400, 310))) return true;
                touch().end(0);
                touch().begin(0, {400, 300});
                return false;
            },
            what);
    }
};

TEST_F(OverlayLibraries, ShowsAnImageAndAnEmojiWithoutThoseThatReadThem) {
    constexpr std::uint32_t kColour = 0xff10a0e0;
    constexpr PixelSize kImage{64, 64};
    ASSERT_FALSE(writePng(imageFile(), {kImage, std::vector(64 * 64, kColour)}));
    ASSERT_NO_FATAL_FAILURE(start({{"displayMode", 1},
                                   {"imagePath", imageFile()},
                                   {"imageSize", 150.0},
                                   {"imageAlpha", 1.0},
                                   {"imageTracking", false}}));
    touchUntil([&](std::uint32_t pixel) { return pixel == kColour; }, "the image");
    expectNoDecoderAndNoFont();
    writeSettings({{"displayMode", 2},
                   {"emojiString", "🍎"},
                   {"emojiAlpha", 1.0},
                   {"emojiSize", 150.0},
                   {"emojiTracking", false}});
    postNotification(SKAVLO_RUN_DIRECTORY "/notify", "com.oxbrel.skavlo.reload");
    touchUntil(
        [](std::uint32_t pixel) {
            return (pixel >> 16U & 0xffU) > 150 && (pixel >> 8U & 0xffU) < 100 &&
                   (pixel & 0xffU) < 100;
        },
        "a red apple");
    expectNoDecoderAndNoFont();
}

// Waits for its text, with everything loaded.
TEST_F(OverlayLibraries, TheChildThatDrawsHasThem) {
    if (geteuid() != 0) GTEST_SKIP() << "only root sees into the child";
    int ends[2];
    ASSERT_EQ(pipe2(ends, O_CLOEXEC), 0);
    const UniqueDescriptor input(ends[0]);
    const UniqueDescriptor unwritten(ends[1]);
    const std::string program =
        std::filesystem::path(SKAVLO_EXECUTABLE).replace_filename("skavlo-raster");
    auto child = startRasterChild({program, "text", "64", "20"}, input);
    ASSERT_TRUE(child) << child.error().message;
    for (const char* part :
         {"pixbuf", "png", "jpeg", "pango", "cairo", "freetype", "fontconfig", "harfbuzz"}) {
        const rig::Deadline deadline(kPatience);
        while (!holds(filesIn(child->process.pid()), part)) ASSERT_FALSE(deadline.passed()) << part;
    }
}

}  // namespace
}  // namespace skavlo
