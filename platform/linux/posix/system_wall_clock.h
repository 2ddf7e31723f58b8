#pragma once

#include <chrono>

#include "platform/time.h"

namespace skavlo {

class SystemWallClock final : public WallClock {
  public:
    [[nodiscard]] double timeIntervalSince1970() const override {
        const auto since = std::chrono::system_clock::now().time_since_epoch();
        return std::chrono::duration<double>(since).count();
    }
};

}  // namespace skavlo
