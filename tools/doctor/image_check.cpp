#include <sys/mman.h>
#include <unistd.h>

#include <memory>
#include <span>
#include <string>

#include "platform/linux/image/raster_client.h"
#include "platform/linux/loop/asio_run_loop.h"
#include "tools/doctor/checks.h"
#include "tools/doctor/sample_images.h"

namespace skavlo::doctor {

namespace {

struct Kind {
    const char* name;
    std::span<const std::uint8_t> sample;
    Level without;  // what its lack means
    Text advice;
};

// As the overlay has it drawn: by the child, from a file.
bool canBeDrawn(const std::string& program, std::span<const std::uint8_t> image) {
    constexpr int kBox = 16;
    const UniqueDescriptor file(memfd_create("sample", MFD_CLOEXEC));
    if (!file ||
        write(file.get(), image.data(), image.size()) != static_cast<ssize_t>(image.size()))
        return false;
    AsioRunLoop loop;
    RasterClient rasterizer(loop, program);
    bool drawn = false;
    rasterizer.rasterizeImageFile("/proc/self/fd/" + std::to_string(file.get()), kBox,
                                  [&](const std::shared_ptr<const Bitmap>& bitmap) {
                                      drawn = bitmap != nullptr;
                                      loop.stop(0);
                                  });
    loop.run();
    return drawn;
}

Finding judge(const Kind& kind, bool drawn) {
    const std::string name = kind.name;
    if (drawn) return {"images", Level::ok, {"可以显示 " + name, name + " can be shown"}};
    return {"images", kind.without, {"不能显示 " + name, name + " cannot be shown"}, kind.advice};
}

}  // namespace

Findings checkImages(const Surroundings& surroundings) {
    const std::string program = surroundings.raster();
    if (access(program.c_str(), X_OK) != 0) {
        return {{"images",
                 Level::fail,
                 {"没有 " + program + "，图片与表情都不能显示",
                  "there is no " + program + ": neither images nor emoji can be shown"},
                 {"重新安装 Skavlo", "install Skavlo again"}}};
    }
    const Text loaders{"安装 libgdk-pixbuf-2.0-0 并运行 gdk-pixbuf-query-loaders",
                       "install libgdk-pixbuf-2.0-0 and look at gdk-pixbuf-query-loaders"};
    const Kind kinds[] = {
        {"PNG", kPng, Level::fail, loaders},
        {"JPEG", kJpeg, Level::warn, loaders},
        {"GIF", kGif, Level::warn, loaders},
        {"BMP", kBmp, Level::warn, loaders},
        {"TIFF", kTiff, Level::warn, loaders},
        {"WebP", kWebp, Level::warn, {"安装 webp-pixbuf-loader", "install webp-pixbuf-loader"}},
        {"SVG", kSvg, Level::warn, {"安装 librsvg2-common", "install librsvg2-common"}},
        {"AVIF", kAvif, Level::warn, {"安装 libavif-gdk-pixbuf", "install libavif-gdk-pixbuf"}},
        {"HEIC", kHeic, Level::warn, {"安装 heif-gdk-pixbuf", "install heif-gdk-pixbuf"}}};
    Findings findings;
    for (const Kind& kind : kinds)
        findings.push_back(judge(kind, canBeDrawn(program, kind.sample)));
    return findings;
}

}  // namespace skavlo::doctor
