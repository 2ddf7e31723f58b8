// Without a compositor the window has no translucency: it is cut to the shape of what it shows.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "platform/geometry.h"

namespace skavlo {

// The runs of pixels that count as there, row by row, and their colours without translucency.
class Cutout {
  public:
    explicit Cutout(PixelSize size);

    // Looks at the changed rectangles of the premultiplied `source` again and writes opaque
    // colours into the same places of `opaque` (both without gaps between rows).
    void update(const std::uint32_t* source, std::uint32_t* opaque,
                std::span<const PixelRect> changed);
    // Each one pixel high, sorted by row, then by column, none touching another.
    [[nodiscard]] std::vector<PixelRect> runs() const;

  private:
    struct Run {
        int begin;
        int end;
    };
    void updateRow(const std::uint32_t* source, std::uint32_t* opaque, int y,
                   const PixelRect& rect);

    PixelSize size_;
    std::vector<std::vector<Run>> rows_;
};

}  // namespace skavlo
