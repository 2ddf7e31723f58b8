#include "platform/linux/loop/descriptor_watch.h"

#include <asio/posix/stream_descriptor.hpp>
#include <utility>

namespace skavlo {

// The waiting operation shares the state: a completion that is already queued when the watch goes
// still finds it.
struct DescriptorWatch::State : std::enable_shared_from_this<State> {
    State(asio::io_context& context, int fd, std::function<void()> function)
        : descriptor(context, fd), readable(std::move(function)) {}

    void wait() {
        descriptor.async_wait(asio::posix::stream_descriptor::wait_read,
                              [self = shared_from_this()](const asio::error_code& error) {
                                  if (error || self->stopped) return;
                                  self->readable();
                                  if (!self->stopped) self->wait();
                              });
    }

    asio::posix::stream_descriptor descriptor;
    std::function<void()> readable;
    bool stopped = false;
};

DescriptorWatch::DescriptorWatch(asio::io_context& context, int descriptor,
                                 std::function<void()> readable)
    : state_(std::make_shared<State>(context, descriptor, std::move(readable))) {
    state_->wait();
}

DescriptorWatch::~DescriptorWatch() {
    state_->stopped = true;
    state_->descriptor.release();
}

}  // namespace skavlo
