// Something to look at below the markers.
#pragma once

#include "platform/bitmap.h"
#include "platform/result.h"
#include "tools/rig/display.h"

namespace skavlo {

// A background with two windows on it, opaque.
Bitmap drawDesktop(PixelSize size);

// Makes the picture, which has the root window's size, the desktop of the display. It stays there
// when the connection closes. False: the server refused it.
bool showDesktop(const rig::Display& display, const Bitmap& picture);

}  // namespace skavlo
