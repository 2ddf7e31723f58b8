#include "platform/digitizer/coordinates.h"

#include <algorithm>

namespace skavlo {

Point digitizerCoordinates(Point points, Size screen) {
    constexpr double kLargestNormalised = 2.0;
    const double shorter = std::min(screen.width, screen.height);
    const double longer = std::max(screen.width, screen.height);
    if (!(shorter > 0)) return points;
    const Point normalised{points.x / shorter, points.y / longer};
    const bool fits = normalised.x >= 0 && normalised.x <= kLargestNormalised &&
                      normalised.y >= 0 && normalised.y <= kLargestNormalised;
    return fits ? normalised : points;
}

}  // namespace skavlo
