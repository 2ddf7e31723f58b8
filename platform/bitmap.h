#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "platform/geometry.h"

namespace skavlo {

// Premultiplied 32-bit pixels, blue in the lowest byte, then green, red, alpha; rows without gaps.
struct Bitmap {
    PixelSize size;
    std::vector<std::uint32_t> pixels;
};

// Turns image files and texts into bitmaps, out of process. Each completion runs exactly once, on
// the main thread, with null when there is no picture for whatever reason.
class Rasterizer {
  public:
    using Completion = std::function<void(std::shared_ptr<const Bitmap>)>;

    virtual ~Rasterizer() = default;
    // The whole image at its own aspect, embedded orientation applied, scaled to fit into a square
    // of `box` pixels.
    virtual void rasterizeImageFile(const std::string& path, int box, Completion completion) = 0;
    // One line of text in the system font of `fontPixels`, centred in a square of `box` pixels,
    // ellipsised when wider; colour emoji in colour, other glyphs black.
    virtual void rasterizeText(const std::string& utf8, int box, double fontPixels,
                               Completion completion) = 0;
};

}  // namespace skavlo
