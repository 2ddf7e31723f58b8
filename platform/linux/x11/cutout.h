// Without a compositor the window has no translucency: it is cut to the shape of what it shows.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "platform/geometry.h"

namespace skavlo {

// The runs of pixels that count as there, row by row, and their colours without translucency.
//
// Pixels are cut in at once, but cut out only with the next refresh of the display, and keep their
// colours until then: for each piece that a window uncovers, an X server goes through all the
// pieces that lie below, which takes milliseconds.
class Cutout {
  public:
    explicit Cutout(PixelSize size);

    // Looks at the changed rectangles of the premultiplied `source` again and writes opaque
    // colours into the same places of `opaque` (both without gaps between rows).
    void update(const std::uint32_t* source, std::uint32_t* opaque,
                std::span<const PixelRect> changed);
    // Cuts out what has gone since; returns whether there was anything.
    bool settle();
    [[nodiscard]] bool settled() const { return settled_; }
    // Each one pixel high, sorted by row, then by column, none touching another.
    [[nodiscard]] std::vector<PixelRect> runs() const;

  private:
    struct Run {
        int begin;
        int end;
        bool operator==(const Run&) const = default;
    };
    using Row = std::vector<Run>;
    static Row united(const Row& a, const Row& b);
    void updateRow(const std::uint32_t* source, std::uint32_t* opaque, int y,
                   const PixelRect& rect);

    PixelSize size_;
    std::vector<Row> rows_;
    std::vector<Row> cut_;  // `rows_`, and what is not cut out yet
    bool settled_ = true;   // both are the same
};

}  // namespace skavlo
