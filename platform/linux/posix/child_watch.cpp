#include "platform/linux/posix/child_watch.h"

#include <asio/posix/stream_descriptor.hpp>
#include <utility>

namespace skavlo {

struct ChildWatch::State : std::enable_shared_from_this<State> {
    State(asio::io_context& context, ChildProcess process, Ended handler)
        : child(std::move(process)),
          descriptor(context, child.pidfd()),
          ended(std::move(handler)) {}
    // The child's handle closes the descriptor.
    ~State() {
        if (descriptor.is_open()) descriptor.release();
    }

    void wait() {
        descriptor.async_wait(asio::posix::stream_descriptor::wait_read,
                              [weak = weak_from_this()](const asio::error_code& error) {
                                  const auto self = weak.lock();
                                  if (self && !error) self->readable();
                              });
    }

    void readable() {
        const pid_t pid = child.pid();
        if (pid < 0) return;
        descriptor.release();
        if (const auto end = child.reap()) return std::exchange(ended, nullptr)(*end);
        descriptor.assign(child.pidfd());
        wait();
    }

    ChildProcess child;
    asio::posix::stream_descriptor descriptor;
    Ended ended;
};

ChildWatch::ChildWatch(asio::io_context& context, ChildProcess child, Ended ended)
    : state_(std::make_shared<State>(context, std::move(child), std::move(ended))) {
    state_->wait();
}

ChildWatch::~ChildWatch() = default;

void ChildWatch::kill() {
    state_->child.kill();
}

pid_t ChildWatch::pid() const {
    return state_->child.pid();
}

}  // namespace skavlo
