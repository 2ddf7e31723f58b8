#pragma once

#include <linux/capability.h>

#include <optional>

#include "platform/result.h"

namespace skavlo {

// Of what root may do, the part that the overlay needs once it runs, and why.
inline constexpr int kKeptCapabilities[] = {
    CAP_DAC_OVERRIDE,  // open input devices, read the settings and remove the process-id file in
                       // folders of the group mobile, reach the sockets of the user's session
    CAP_SETUID,        // give the drawing child an identity of its own ...
    CAP_SETGID,        // ... and
    CAP_KILL,          // end it when it takes too long
};

// Gives up, for good, what the overlay does not need once it runs: every other capability, gaining
// any by running a program, and the system calls that are not its business. Holds for every thread
// of the process. To be called after start-up; after an error the process must end.
[[nodiscard]] std::optional<Error> giveUpRights();

}  // namespace skavlo
