// A photo as cameras take them becomes the marker, while the main thread goes on answering. For how
// long at a stretch it was away from its loop is told, for the benchmarks.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/mman.h>

#include <filesystem>
#include <fstream>
#include <random>

#include "settings/image_import.h"
#include "tests/e2e/settings/loop_watch.h"
#include "tests/e2e/settings/settings_rig.h"
#include "tests/unit/image/picture_files.h"

namespace skavlo {
namespace {

constexpr int kPhotoWidth = 8660;
constexpr int kPhotoHeight = 5774;

// A sky with some grain, which no compression can do away with.
void drawPhoto(cairo_t* cairo) {
    cairo_pattern_t* sky = cairo_pattern_create_linear(0, 0, 0.3, 1);
    cairo_pattern_add_color_stop_rgb(sky, 0, 0.1, 0.3, 0.7);
    cairo_pattern_add_color_stop_rgb(sky, 1, 0.9, 0.6, 0.4);
    cairo_set_source(cairo, sky);
    cairo_paint(cairo);
    cairo_pattern_destroy(sky);
    constexpr int kSide = 509;
    std::mt19937 random(5);
    std::vector<std::uint32_t> grain(std::size_t{kSide} * kSide);
    for (std::uint32_t& pixel : grain) pixel = static_cast<std::uint32_t>(random() % 24) << 24;
    cairo_surface_t* surface =
        cairo_image_surface_create_for_data(reinterpret_cast<unsigned char*>(grain.data()),
                                            CAIRO_FORMAT_ARGB32, kSide, kSide, kSide * 4);
    cairo_identity_matrix(cairo);
    cairo_set_source_surface(cairo, surface, 0, 0);
    cairo_pattern_set_extend(cairo_get_source(cairo), CAIRO_EXTEND_REPEAT);
    cairo_paint(cairo);
    cairo_surface_destroy(surface);
}

class PhotoImport : public SettingsRig {
  protected:
    PhotoImport() : reportFile_(home_ / "report") {
        std::ofstream(reportFile_) << std::string(sizeof(LoopReport), '\0');
        const rig::FileDescriptor file(::open(reportFile_.c_str(), O_RDWR | O_CLOEXEC));
        void* memory =
            mmap(nullptr, sizeof(LoopReport), PROT_READ | PROT_WRITE, MAP_SHARED, file.get(), 0);
        if (memory != MAP_FAILED) report_ = static_cast<LoopReport*>(memory);
    }
    ~PhotoImport() override {
        if (report_) munmap(report_, sizeof(LoopReport));
    }
    // The application, its main thread watched, with the list of image files open.
    void openWatched() {
        ASSERT_TRUE(report_);
        PropertyDictionary settings;
        settings["displayMode"] = 1;
        writeSettings(settings);
        ASSERT_NO_FATAL_FAILURE(open(
            SKAVLO_EXECUTABLE, {std::string("LD_PRELOAD=") + SKAVLO_LOOP_WATCH,
                                std::string(kLoopWatchVariable) + "=" + reportFile_.string()}));
        click(rig::kButtonRole, "选择自定义图片...");
        item("list item", "photo.jpg");
    }
    // True: it can be seen that the application is at work.
    bool isBusy() {
        const auto spinner = application().tree().find(kBusyRole, "正在处理");
        return spinner && spinner->showing;
    }

    static constexpr const char* kBusyRole = "animation";
    std::filesystem::path reportFile_;
    LoopReport* report_ = nullptr;
};

TEST_F(PhotoImport, OfFiftyMegapixelsLeavesTheMainThreadFree) {
    const std::filesystem::path photo = home_ / "photo.jpg";
    ASSERT_TRUE(saveDrawing(drawPhoto, kPhotoWidth, kPhotoHeight, photo, "jpeg"));
    ASSERT_GT(std::filesystem::file_size(photo), kCustomImageByteLimit);
    ASSERT_NO_FATAL_FAILURE(openWatched());
    ASSERT_GT(report_->turns.load(), 0) << "the loop is not watched";

    report_->longestNanoseconds = 0;
    click("list item", "photo.jpg");
    item(kBusyRole, "正在处理");
    int looks = 0;  // each of them answered by the main thread
    const std::int64_t turnsBefore = report_->turns;
    while (isBusy()) ++looks;
    const std::int64_t turns = report_->turns - turnsBefore;
    item("alert", "成功");
    const std::int64_t longest = report_->longestNanoseconds;
    std::printf("    the main thread was away for %.1f ms at most, %d looks, %lld turns\n",
                static_cast<double>(longest) / 1e6, looks, static_cast<long long>(turns));
    EXPECT_GT(looks, 1) << "it did not stay busy";
    EXPECT_GT(longest, 0);
    const std::string png = contents(customImage()).value_or("");
    EXPECT_TRUE(png.starts_with("\x89PNG\r\n\x1a\n"));
    EXPECT_TRUE(settingBecomes("imagePath", customImage()));
}

}  // namespace
}  // namespace skavlo
