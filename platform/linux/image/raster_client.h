#pragma once

#include <asio/io_context.hpp>
#include <chrono>
#include <cstdint>
#include <memory>
#include <string>
#include <unordered_set>
#include <vector>

#include "platform/bitmap.h"
#include "platform/linux/loop/asio_run_loop.h"
#include "platform/linux/posix/unique_descriptor.h"

namespace skavlo {

class RasterJob;

struct RasterLimits {
    std::chrono::milliseconds timeout{5000};  // from the request to the child's end
    std::int64_t imageFileBytes = 64 * 1024 * 1024;
};

// One child per request; none of its bytes is trusted. Boxes from 1 to kMaximumBox pixels.
class RasterClient final : public Rasterizer {
  public:
    // `program` is the path of skavlo-raster. The loop must outlive the client.
    RasterClient(AsioRunLoop& loop, std::string program, RasterLimits limits = {});
    // Kills what is under way, whose completions are never called.
    ~RasterClient() override;
    RasterClient(const RasterClient&) = delete;
    RasterClient& operator=(const RasterClient&) = delete;

    void rasterizeImageFile(const std::string& path, int box, Completion completion) override;
    void rasterizeText(const std::string& utf8, int box, double fontPixels,
                       Completion completion) override;

  private:
    // `input` becomes the child's standard input; without one the request has failed already.
    void start(UniqueDescriptor input, int box, const std::vector<std::string>& request,
               Completion completion);

    asio::io_context& context_;
    std::string program_;
    RasterLimits limits_;
    std::unordered_set<std::shared_ptr<RasterJob>> jobs_;
};

}  // namespace skavlo
