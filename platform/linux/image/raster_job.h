#pragma once

#include <array>
#include <asio/io_context.hpp>
#include <asio/posix/stream_descriptor.hpp>
#include <asio/steady_timer.hpp>
#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/bitmap.h"
#include "platform/linux/image/raster_protocol.h"
#include "platform/linux/posix/child_watch.h"

namespace skavlo {

// One run of skavlo-raster: starts it, reads what it answers, believes it only when the answer has
// exactly the announced length and the child ends well, and reaps it. Destroying the job kills the
// child and calls nothing.
class RasterJob final : public std::enable_shared_from_this<RasterJob> {
  public:
    using Done = std::function<void(std::shared_ptr<const Bitmap>)>;

    RasterJob(asio::io_context& context, int box, Done done);

    // `done` runs once, on the loop, never from within these two. It gets a square of `box` pixels
    // with the answer in its middle, or null.
    void start(const std::vector<std::string>& arguments, const UniqueDescriptor& input,
               std::chrono::milliseconds timeout);
    void fail();

  private:
    [[nodiscard]] bool spawn(const std::vector<std::string>& arguments,
                             const UniqueDescriptor& input);
    void readHeader();
    void readPixels();
    void expectEnd();
    void answered(bool valid);
    void ended(ChildEnd end);
    void finish();
    [[nodiscard]] std::shared_ptr<const Bitmap> centred();

    asio::posix::stream_descriptor output_;
    asio::steady_timer timer_;
    int box_;
    Done done_;
    RasterHeader header_{};
    std::vector<std::uint32_t> pixels_;
    std::array<char, 1> excess_{};
    std::optional<bool> answerValid_;  // none: still reading
    std::optional<ChildEnd> end_;      // none: still running
    std::optional<ChildWatch> child_;
};

}  // namespace skavlo
