#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "platform/linux/posix/child_process.h"
#include "platform/linux/posix/unique_descriptor.h"
#include "platform/result.h"

namespace skavlo {

// The regular file of this path and of at most so many bytes, opened without waiting for a writer
// of a FIFO or taking over a terminal; else empty.
[[nodiscard]] UniqueDescriptor openImage(const std::string& path, std::int64_t maximumBytes);

// A started skavlo-raster and what it answers. The child dies with the thread that started it.
struct RasterChild {
    ChildProcess process;
    UniqueDescriptor output;
};

// `arguments` are the program's path and its request, `input` becomes its standard input.
[[nodiscard]] Result<RasterChild> startRasterChild(const std::vector<std::string>& arguments,
                                                   const UniqueDescriptor& input);

// In the form that does not depend on the locale and reads back as the same number.
[[nodiscard]] std::string decimal(double value);

}  // namespace skavlo
