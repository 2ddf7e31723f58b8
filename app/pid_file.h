#pragma once

#include <optional>
#include <string>

#include "platform/files.h"

namespace skavlo {

// The number at the start of the file, 0 when there is none; nothing when the file cannot be read
// as UTF-8 text.
std::optional<int> readPidFile(const Files& files, const std::string& path);

}  // namespace skavlo
