#include "platform/linux/capture/mirror_source.h"

#include <algorithm>
#include <cstddef>

namespace skavlo {

namespace {

bool hasTwin(const OutputLayout& layout, std::size_t index) {
    const PixelRect& rect = layout.outputs[index].rect;
    if (rect.width <= 0 || rect.height <= 0) return false;
    return std::count_if(layout.outputs.begin(), layout.outputs.end(),
                         [&](const OutputInfo& other) { return other.rect == rect; }) > 1;
}

}  // namespace

bool isMirrored(const OutputLayout& layout) {
    if (layout.main < layout.outputs.size()) return hasTwin(layout, layout.main);
    for (std::size_t i = 0; i < layout.outputs.size(); ++i) {
        if (hasTwin(layout, i)) return true;
    }
    return false;
}

}  // namespace skavlo
