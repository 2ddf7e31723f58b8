// An animated picture: a PNG with further frames (APNG 1.0), which loops for ever.
#pragma once

#include <chrono>
#include <optional>
#include <string>
#include <vector>

#include "platform/bitmap.h"
#include "platform/result.h"

namespace skavlo::rig {

// Keeps of every frame only what differs from the one before.
class Animation {
  public:
    // Every frame has the first one's size.
    void add(const Bitmap& frame, std::chrono::milliseconds shownFor);
    [[nodiscard]] std::size_t frames() const { return frames_.size(); }
    // None: written.
    [[nodiscard]] std::optional<Error> write(const std::string& path) const;

  private:
    struct Frame {
        PixelPoint origin;
        Bitmap part;
        std::chrono::milliseconds shownFor;
    };

    [[nodiscard]] std::string encode() const;
    Bitmap last_;
    std::vector<Frame> frames_;
};

// The smallest rectangle outside of which two bitmaps of one size are equal; empty: no difference.
PixelRect difference(const Bitmap& left, const Bitmap& right);

}  // namespace skavlo::rig
