// When a frame will be seen, from when earlier ones were.
#pragma once

#include "platform/time.h"

namespace skavlo {

// One frame that the display has shown.
struct Presented {
    MachTime time = 0;     // 0: none yet
    MachTime refresh = 0;  // from one refresh to the next; 0: not known
};

// The display's first refresh after `now`, counted on from the last one that is known; `now` where
// nothing is known or it lies more than a second back, as displays may change their rhythm.
MachTime nextPresentation(const Presented& last, MachTime now);

}  // namespace skavlo
