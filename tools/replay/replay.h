// Recorded touches in, pictures out.
#pragma once

#include <csignal>
#include <string>

#include "tools/replay/options.h"

namespace skavlo {

inline constexpr int kReplayFailed = 1;    // something could not be written
inline constexpr int kReplayBadInput = 2;  // arguments, recording, settings

// Returns the exit status; what is wrong stands on the standard error by then. Ends early, with
// nothing written, once `stopped` is not 0.
int replay(const ReplayOptions& options, const std::string& rasterProgram,
           const volatile std::sig_atomic_t& stopped);

// "skavlo-replay: MESSAGE" on the standard error; returns the status.
int replayFails(int status, const std::string& message);

}  // namespace skavlo
