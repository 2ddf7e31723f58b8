// How a back end writes a contact's place into a digitizer event.
#pragma once

#include "platform/geometry.h"

namespace skavlo {

// The reader takes 0 <= x, y <= 2 as normalised, x by the shorter and y by the longer side of the
// screen, whatever its orientation, and anything else as points. So the place in points is written
// as (x / min(w, h), y / max(w, h)) when both lie in 0 to 2, and as it stands otherwise; either
// way the reader finds exactly `points` again.
Point digitizerCoordinates(Point points, Size screen);

}  // namespace skavlo
