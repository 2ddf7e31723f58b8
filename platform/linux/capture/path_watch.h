#pragma once

#include <functional>
#include <memory>
#include <string>

#include "platform/linux/loop/descriptor_watch.h"
#include "platform/linux/posix/unique_descriptor.h"

namespace skavlo {

// Waits for a file to be made, along with the directories above it that are missing.
class PathWatch {
  public:
    // `made` runs on the loop after each making of a file at this absolute path, also when it
    // replaces another. What is there already is not reported.
    PathWatch(asio::io_context& context, std::string path, std::function<void()> made);
    ~PathWatch();
    PathWatch(const PathWatch&) = delete;
    PathWatch& operator=(const PathWatch&) = delete;

  private:
    void rearm();
    void read();

    std::string path_;
    std::function<void()> made_;
    UniqueDescriptor inotify_;
    int watched_ = -1;
    std::string next_;  // what is waited for in the watched directory
    std::unique_ptr<DescriptorWatch> watch_;
};

}  // namespace skavlo
