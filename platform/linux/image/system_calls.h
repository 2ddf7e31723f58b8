#pragma once

#include <optional>

#include "platform/result.h"

namespace skavlo {

// Restricts this process, and every thread it starts, to the system calls that decoding an image
// and drawing a text take. The rest kills the process, but for a few that libraries try and can do
// without, which fail with EACCES, EINVAL or ENOSYS. Cannot be undone.
[[nodiscard]] std::optional<Error> filterSystemCalls();

}  // namespace skavlo
