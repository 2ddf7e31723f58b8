// Which parts of a frame changed, in square tiles.
#pragma once

#include <cstdint>
#include <vector>

#include "platform/geometry.h"

namespace skavlo {

class TileMask {
  public:
    static constexpr int kTile = 16;  // pixels: a row of a tile is a line of the cache

    TileMask() = default;
    explicit TileMask(PixelSize frame);

    // Rectangles outside the frame, wholly or in part, are clipped.
    void add(const PixelRect& rect);
    void add(const TileMask& other);   // of the same frame size
    void keep(const TileMask& other);  // what is in the other as well
    void addAll();
    void clear();

    [[nodiscard]] bool empty() const;
    [[nodiscard]] bool touchesAny(const PixelRect& rect) const;
    // Every tile of the part of the rectangle that lies in the frame.
    [[nodiscard]] bool coversAll(const PixelRect& rect) const;
    // The mask as rectangles that do not overlap, clipped to the frame; runs of rows are merged.
    [[nodiscard]] std::vector<PixelRect> rects() const;

  private:
    struct Range {
        int left, top, right, bottom;  // tiles, half open
    };
    [[nodiscard]] Range tilesOf(const PixelRect& rect) const;
    [[nodiscard]] int nextTile(int from, int end) const;
    [[nodiscard]] bool at(int column, int row) const;

    PixelSize frame_;
    int columns_ = 0;
    int rows_ = 0;
    std::vector<std::uint8_t> tiles_;
};

// What must be drawn again into a buffer of a given age.
class DamageHistory {
  public:
    // Starts over: every buffer is unknown.
    void reset(PixelSize frame);
    // Notes what changed in a new frame and returns what must be drawn into a buffer that holds
    // the frame `age` frames before it: the changes since then; everything for age 0 or unknown.
    const TileMask& push(const TileMask& changed, int age);

  private:
    // A second buffer may be wanted only now and then.
    static constexpr std::size_t kRemembered = 16;
    PixelSize frame_;
    std::vector<TileMask> recent_;  // newest first
    TileMask result_;
};

}  // namespace skavlo
