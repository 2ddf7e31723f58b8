// What a screen shows.
#pragma once

#include "platform/bitmap.h"
#include "platform/result.h"
#include "tools/rig/display.h"

namespace skavlo::rig {

// The whole root window with everything on it at one moment, opaque.
Result<Bitmap> captureRoot(const Display& display);

// 0xAARRGGBB; the place must lie within the bitmap.
inline std::uint32_t pixelAt(const Bitmap& bitmap, PixelPoint place) {
    return bitmap.pixels.at(static_cast<std::size_t>(place.y) * bitmap.size.width + place.x);
}

}  // namespace skavlo::rig
