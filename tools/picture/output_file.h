#pragma once

#include <optional>
#include <string>

#include "platform/result.h"

namespace skavlo {

// A regular file gets its new contents whole or keeps its old ones; a device or a pipe is written
// to as it stands. None: written.
std::optional<Error> writeFile(const std::string& path, const std::string& bytes);

}  // namespace skavlo
