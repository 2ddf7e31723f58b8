// Writing pictures as PNG.
#pragma once

#include <optional>
#include <string>

#include "platform/bitmap.h"
#include "platform/result.h"

namespace skavlo::rig {

// The bytes of an opaque true-colour PNG; empty: out of memory or without pixels.
std::string encodePng(const Bitmap& bitmap);

// None: written.
std::optional<Error> writeFile(const std::string& path, const std::string& bytes);
std::optional<Error> writePng(const std::string& path, const Bitmap& bitmap);

}  // namespace skavlo::rig
