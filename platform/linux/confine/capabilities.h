#pragma once

#include <cstdint>
#include <optional>

#include "platform/result.h"

namespace skavlo {

// Takes every capability but those of `kept` (bit 1 << CAP_...) from every thread of the process,
// in all sets, for good. What a thread never had it does not gain. Returns an error when a thread
// could not be reached or refused; some may have changed by then.
[[nodiscard]] std::optional<Error> dropCapabilities(std::uint64_t kept);

}  // namespace skavlo
