#pragma once

#include <string>
#include <vector>

#include "tools/recording/recording.h"

namespace skavlo {

// Where contacts move or lift without touching, or touch twice: touch hardware does such things,
// but in a recording written by hand it is more likely a mistake. What the overlay makes of it
// stands with it.
std::vector<std::string> contactOddities(const TouchRecording& recording);

}  // namespace skavlo
