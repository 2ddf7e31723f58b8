#pragma once

#include <asio/io_context.hpp>
#include <functional>
#include <memory>

#include "platform/linux/posix/child_process.h"

namespace skavlo {

// Waits for a child through the loop and reaps it: no signal handler, no other child touched.
class ChildWatch {
  public:
    using Ended = std::function<void(ChildEnd)>;

    // `ended` runs once, on the loop, after the child was reaped; it may destroy the watch.
    // Destroying the watch before kills and reaps the child and calls nothing.
    ChildWatch(asio::io_context& context, ChildProcess child, Ended ended);
    ~ChildWatch();
    ChildWatch(const ChildWatch&) = delete;
    ChildWatch& operator=(const ChildWatch&) = delete;

    // Its end is reported as any other.
    void kill();
    [[nodiscard]] pid_t pid() const;

  private:
    struct State;
    std::shared_ptr<State> state_;
};

}  // namespace skavlo
