#pragma once

#include "platform/geometry.h"

namespace skavlo {

// What a window is told of a finger on it, in its own points.
struct WindowTouch {
    enum class Kind { down, motion, up };
    Kind kind;
    Point place;  // of a lift: the last one
};

}  // namespace skavlo
