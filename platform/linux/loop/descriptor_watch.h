#pragma once

#include <asio/io_context.hpp>
#include <functional>
#include <memory>

namespace skavlo {

// Calls `readable` on the loop while the descriptor has something to read. The descriptor stays
// its owner's and must outlive the watch. The watch may be destroyed by its own call.
class DescriptorWatch {
  public:
    DescriptorWatch(asio::io_context& context, int descriptor, std::function<void()> readable);
    ~DescriptorWatch();
    DescriptorWatch(const DescriptorWatch&) = delete;
    DescriptorWatch& operator=(const DescriptorWatch&) = delete;

  private:
    struct State;
    std::shared_ptr<State> state_;
};

}  // namespace skavlo
