#pragma once

#include <sys/types.h>

#include <vector>

#include "platform/linux/posix/unique_descriptor.h"
#include "platform/result.h"

namespace skavlo {

// The kernel's process connector, as far as it tells of programs that are started.
class ProcessEvents {
  public:
    // An error for processes without the right to listen, and in a container, whose processes the
    // connector does not tell of.
    static Result<ProcessEvents> open();

    // Readable when programs were started.
    [[nodiscard]] int descriptor() const { return socket_.get(); }
    // The processes that have started a program since; `missed`: there were more than the kernel
    // keeps.
    struct Started {
        std::vector<pid_t> processes;
        bool missed = false;
    };
    Started read();

  private:
    explicit ProcessEvents(UniqueDescriptor socket) : socket_(std::move(socket)) {}

    UniqueDescriptor socket_;
};

}  // namespace skavlo
