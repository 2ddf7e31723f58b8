#include "tools/replay/replay_system.h"

#include <utility>

namespace skavlo {

namespace {
// A slow machine gives the same pictures, only later.
constexpr RasterLimits kPatience{.timeout = std::chrono::minutes(2)};
}  // namespace

ReplayRasterizer::ReplayRasterizer(const std::string& program)
    : client_(loop_, program, kPatience) {}

Rasterizer::Completion ReplayRasterizer::counted(const std::string& what, Completion completion) {
    ++waitingFor_;
    return [this, what, completion = std::move(completion)](std::shared_ptr<const Bitmap> bitmap) {
        --waitingFor_;
        if (!bitmap) failed_.push_back(what);
        completion(std::move(bitmap));
    };
}

void ReplayRasterizer::rasterizeImageFile(const std::string& path, int box, Completion completion) {
    client_.rasterizeImageFile(path, box, counted(path, std::move(completion)));
}

void ReplayRasterizer::rasterizeText(const std::string& utf8, int box, double fontPixels,
                                     Completion completion) {
    client_.rasterizeText(utf8, box, fontPixels, counted(utf8, std::move(completion)));
}

void ReplayRasterizer::waitForAll() {
    while (waitingFor_ > 0) loop_.context().run_one();
}

}  // namespace skavlo
