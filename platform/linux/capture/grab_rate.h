#pragma once

#include <cstdint>
#include <deque>
#include <map>

#include "platform/geometry.h"

namespace skavlo {

// Tells a recording from a screenshot by how often a client of the X server reads the screen.
class GrabRate {
  public:
    static constexpr unsigned kGrabs = 3;
    static constexpr std::uint32_t kWithinMilliseconds = 1000;
    static constexpr int kLeastShareOfScreen = 10;  // in hundredths, of each grab

    // Whether a read is large enough to count.
    static bool isLarge(PixelSize grabbed, PixelSize screen);

    // A large read by one client, at the server's time in milliseconds, which wraps around. True
    // when it continues a recording.
    bool grabbed(std::uint32_t client, std::uint32_t time);

  private:
    void forget(std::uint32_t now);

    std::map<std::uint32_t, std::deque<std::uint32_t>> grabs_;  // times by client, oldest first
};

}  // namespace skavlo
