#pragma once

#include <cstdlib>
#include <memory>

namespace skavlo {

struct FreeReply {
    void operator()(void* reply) const { std::free(reply); }
};

// What xcb hands out is its receiver's to free.
template <typename T>
using XcbReply = std::unique_ptr<T, FreeReply>;

}  // namespace skavlo
