#include "platform/linux/image/raster_job.h"

#include <algorithm>
#include <asio/buffer.hpp>
#include <asio/error.hpp>
#include <asio/post.hpp>
#include <asio/read.hpp>
#include <utility>

#include "platform/linux/image/raster_child.h"

namespace skavlo {

RasterJob::RasterJob(asio::io_context& context, int box, Done done)
    : output_(context), timer_(context), box_(box), done_(std::move(done)) {}

void RasterJob::start(const std::vector<std::string>& arguments, const UniqueDescriptor& input,
                      std::chrono::milliseconds timeout) {
    if (!spawn(arguments, input)) return fail();
    timer_.expires_after(timeout);
    timer_.async_wait([weak = weak_from_this()](const asio::error_code& error) {
        const auto self = weak.lock();
        if (self && !error) self->answered(false);
    });
    readHeader();
}

void RasterJob::fail() {
    answerValid_ = false;
    asio::post(output_.get_executor(), [weak = weak_from_this()] {
        if (const auto self = weak.lock()) self->ended(ChildEnd{});
    });
}

bool RasterJob::spawn(const std::vector<std::string>& arguments, const UniqueDescriptor& input) {
    auto child = startRasterChild(arguments, input);
    if (!child) return false;
    output_.assign(child->output.release());
    auto& context = static_cast<asio::io_context&>(output_.get_executor().context());
    child_.emplace(context, std::move(child->process), [this](ChildEnd end) { ended(end); });
    return true;
}

void RasterJob::readHeader() {
    asio::async_read(output_, asio::buffer(&header_, sizeof header_),
                     [weak = weak_from_this()](const asio::error_code& error, std::size_t) {
                         const auto self = weak.lock();
                         if (!self || self->answerValid_) return;
                         const RasterHeader& header = self->header_;
                         const auto fits = [&self](int side) {
                             return side >= 1 && side <= self->box_;
                         };
                         if (error || header.magic != kRasterMagic || !fits(header.width) ||
                             !fits(header.height))
                             return self->answered(false);
                         self->readPixels();
                     });
}

void RasterJob::readPixels() {
    pixels_.resize(static_cast<std::size_t>(header_.width) *
                   static_cast<std::size_t>(header_.height));
    asio::async_read(output_, asio::buffer(pixels_),
                     [weak = weak_from_this()](const asio::error_code& error, std::size_t) {
                         const auto self = weak.lock();
                         if (!self || self->answerValid_) return;
                         if (error) return self->answered(false);
                         self->expectEnd();
                     });
}

void RasterJob::expectEnd() {
    asio::async_read(output_, asio::buffer(excess_),
                     [weak = weak_from_this()](const asio::error_code& error, std::size_t) {
                         const auto self = weak.lock();
                         if (!self || self->answerValid_) return;
                         self->answered(error == asio::error::eof);
                     });
}

// A child that has answered wrongly, or not in time, has nothing more to say.
void RasterJob::answered(bool valid) {
    answerValid_ = valid && answerValid_.value_or(true);
    output_.close();
    if (!*answerValid_ && child_) child_->kill();
    if (end_) finish();
}

void RasterJob::ended(ChildEnd end) {
    end_ = end;
    if (answerValid_) finish();
}

void RasterJob::finish() {
    timer_.cancel();
    const bool good = *answerValid_ && end_->success();
    // Last, because it may destroy the job.
    if (const Done done = std::exchange(done_, nullptr)) done(good ? centred() : nullptr);
}

std::shared_ptr<const Bitmap> RasterJob::centred() {
    auto bitmap = std::make_shared<Bitmap>();
    bitmap->size = {box_, box_};
    if (header_.width == box_ && header_.height == box_) {
        bitmap->pixels = std::move(pixels_);
        return bitmap;
    }
    const auto side = static_cast<std::size_t>(box_);
    const auto width = static_cast<std::size_t>(header_.width);
    const auto height = static_cast<std::size_t>(header_.height);
    bitmap->pixels.resize(side * side);
    auto* target = bitmap->pixels.data() + (side - height) / 2 * side + (side - width) / 2;
    for (std::size_t y = 0; y < height; ++y)
        std::copy_n(pixels_.data() + y * width, width, target + y * side);
    return bitmap;
}

}  // namespace skavlo
