// What a marker looks like, fixed when the marker is made.
#pragma once

#include <memory>
#include <variant>

#include "overlay/render/sprite.h"
#include "settings/colour.h"

namespace skavlo {

struct CircleLook {
    Colour fill;
    Colour border;
    double borderWidth = 0;  // points
};

// The picture arrives when the rasteriser has it, possibly after the marker was made.
struct PictureLook {
    std::shared_ptr<const Sprite> sprite;
};

struct Look {
    double size = 0;     // side or diameter in points
    double opacity = 1;  // of the whole composed look
    std::variant<CircleLook, PictureLook> shape;
};

}  // namespace skavlo
