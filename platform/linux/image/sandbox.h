#pragma once

#include <sys/resource.h>
#include <sys/types.h>

#include <optional>

#include "platform/result.h"

namespace skavlo {

// The identity that the child takes when root starts it. No account of this number exists and none
// should: 61017 lies above the ids of people, containers' hosts and homes (up to 60577), below the
// ids that the service manager hands out (61184 to 65519), among those that distributions assign by
// hand only, and within the 65536 ids that every container has.
inline constexpr uid_t kSandboxUser = 61017;

// What decoding one image and keeping it at the size of a marker takes, with a good margin.
struct SandboxLimits {
    rlim_t addressSpaceBytes = rlim_t{1} << 30;
    rlim_t processorSeconds = 10;
};

// From here on the process can read what everybody can, compute and write to the descriptors it
// has. To be called with one thread and before any foreign byte is looked at. After an error the
// process must end.
[[nodiscard]] std::optional<Error> enterSandbox(const SandboxLimits& limits = {});

}  // namespace skavlo
