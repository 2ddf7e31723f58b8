// An animated picture: a PNG with further frames (APNG 1.0), which loops for ever.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "platform/bitmap.h"
#include "platform/result.h"
#include "tools/picture/png.h"

namespace skavlo {

struct AnimatedPngTraits {
    Transparency transparency = Transparency::none;
    std::uint16_t ticksPerSecond = 1000;
    // Takes time with every frame instead of memory until the end.
    bool compressAtOnce = false;
};

// Keeps of every frame only what differs from the one before.
class AnimatedPng {
  public:
    explicit AnimatedPng(AnimatedPngTraits traits = {}) : traits_(traits) {}

    // Every frame has the first one's size; it is shown for up to 65535 ticks.
    void add(const Bitmap& frame, std::uint16_t ticks);
    [[nodiscard]] std::size_t frames() const { return frames_.size(); }
    // None: written.
    [[nodiscard]] std::optional<Error> write(const std::string& path) const;

  private:
    struct Frame {
        PixelRect place;
        std::uint16_t ticks;
        Bitmap part;             // until it is compressed
        std::string compressed;  // as PNG holds it; empty: not yet
    };

    [[nodiscard]] std::string compress(const Bitmap& part) const;
    [[nodiscard]] std::string frameControl(const Frame& frame, std::uint32_t sequence) const;
    [[nodiscard]] std::string encode() const;

    AnimatedPngTraits traits_;
    Bitmap last_;
    std::vector<Frame> frames_;
};

// The smallest rectangle outside of which two bitmaps of one size are equal; empty: no difference.
PixelRect difference(const Bitmap& left, const Bitmap& right);

}  // namespace skavlo
