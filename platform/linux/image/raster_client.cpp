#include "platform/linux/image/raster_client.h"

#include <fcntl.h>
#include <unistd.h>

#include <utility>

#include "platform/linux/image/raster_child.h"
#include "platform/linux/image/raster_job.h"
#include "platform/linux/image/raster_protocol.h"

namespace skavlo {

namespace {

// A pipe that holds the whole text, its writing end closed already.
UniqueDescriptor pipeHolding(const std::string& text) {
    int ends[2];
    if (text.size() > kMaximumTextBytes || pipe2(ends, O_CLOEXEC) != 0) return {};
    UniqueDescriptor readEnd(ends[0]);
    const UniqueDescriptor writeEnd(ends[1]);
    if (text.empty()) return readEnd;
    const ssize_t written = write(writeEnd.get(), text.data(), text.size());
    if (written != static_cast<ssize_t>(text.size())) return {};
    return readEnd;
}

bool validBox(int box) {
    return box >= 1 && box <= kMaximumBox;
}

}  // namespace

RasterClient::RasterClient(AsioRunLoop& loop, std::string program, RasterLimits limits)
    : context_(loop.context()), program_(std::move(program)), limits_(limits) {}

RasterClient::~RasterClient() = default;

void RasterClient::rasterizeImageFile(const std::string& path, int box, Completion completion) {
    UniqueDescriptor input;
    if (validBox(box)) input = openImage(path, limits_.imageFileBytes);
    start(std::move(input), box, {program_, "image", std::to_string(box)}, std::move(completion));
}

void RasterClient::rasterizeText(const std::string& utf8, int box, double fontPixels,
                                 Completion completion) {
    UniqueDescriptor input;
    const bool validFont = fontPixels > 0 && fontPixels <= kMaximumFontPixels;
    if (validBox(box) && validFont) input = pipeHolding(utf8);
    start(std::move(input), box, {program_, "text", std::to_string(box), decimal(fontPixels)},
          std::move(completion));
}

void RasterClient::start(UniqueDescriptor input, int box, const std::vector<std::string>& request,
                         Completion completion) {
    // The job is forgotten before its completion runs, which may destroy the client.
    auto place = std::make_shared<std::weak_ptr<RasterJob>>();
    auto done = [this, place,
                 completion = std::move(completion)](std::shared_ptr<const Bitmap> bitmap) {
        const auto job = place->lock();
        jobs_.erase(job);
        completion(std::move(bitmap));
    };
    const auto job = std::make_shared<RasterJob>(context_, box, std::move(done));
    *place = job;
    jobs_.insert(job);
    if (input)
        job->start(request, input, limits_.timeout);
    else
        job->fail();
}

}  // namespace skavlo
