// Writing pictures as PNG.
#pragma once

#include <optional>
#include <string>

#include "platform/bitmap.h"
#include "platform/result.h"

namespace skavlo {

// What becomes of the alpha of a bitmap's pixels.
enum class Transparency {
    none,  // the bitmap counts as opaque, whatever its alpha
    kept,  // the file holds straight colours and alpha
};

// Red, green, blue and alpha, not premultiplied, one byte each. Colours are rounded to the nearest;
// a pixel without alpha has none.
std::string straightColours(const Bitmap& bitmap);

// The bytes of a true-colour PNG; empty: out of memory or without pixels.
std::string encodePng(const Bitmap& bitmap, Transparency transparency = Transparency::none);

// None: written.
std::optional<Error> writePng(const std::string& path, const Bitmap& bitmap,
                              Transparency transparency = Transparency::none);

}  // namespace skavlo
