#include "overlay/tile_mask.h"

#include <algorithm>
#include <cstring>
#include <functional>

namespace skavlo {

TileMask::TileMask(PixelSize frame)
    : frame_(frame),
      columns_((frame.width + kTile - 1) / kTile),
      rows_((frame.height + kTile - 1) / kTile),
      tiles_(static_cast<std::size_t>(columns_) * static_cast<std::size_t>(rows_)) {}

TileMask::Range TileMask::tilesOf(const PixelRect& rect) const {
    const int left = std::max(rect.x, 0);
    const int top = std::max(rect.y, 0);
    const int right = std::min(rect.right(), frame_.width);
    const int bottom = std::min(rect.bottom(), frame_.height);
    if (left >= right || top >= bottom) return {0, 0, 0, 0};
    return {left / kTile, top / kTile, (right + kTile - 1) / kTile, (bottom + kTile - 1) / kTile};
}

// The first tile of the mask from the index `from` on, `end` if there is none before it.
int TileMask::nextTile(int from, int end) const {
    const std::uint8_t* first = tiles_.data() + from;
    const void* found = std::memchr(first, 1, static_cast<std::size_t>(end - from));
    return found ? from + static_cast<int>(static_cast<const std::uint8_t*>(found) - first) : end;
}

bool TileMask::at(int column, int row) const {
    return tiles_[static_cast<std::size_t>(row) * static_cast<std::size_t>(columns_) +
                  static_cast<std::size_t>(column)] != 0;
}

void TileMask::add(const PixelRect& rect) {
    const Range range = tilesOf(rect);
    for (int row = range.top; row < range.bottom; ++row) {
        const auto first = tiles_.begin() + static_cast<std::ptrdiff_t>(row) * columns_;
        std::fill(first + range.left, first + range.right, std::uint8_t{1});
    }
}

void TileMask::add(const TileMask& other) {
    std::transform(tiles_.begin(), tiles_.end(), other.tiles_.begin(), tiles_.begin(),
                   std::bit_or());
}

void TileMask::keep(const TileMask& other) {
    std::transform(tiles_.begin(), tiles_.end(), other.tiles_.begin(), tiles_.begin(),
                   std::bit_and());
}

void TileMask::addAll() {
    std::fill(tiles_.begin(), tiles_.end(), std::uint8_t{1});
}

void TileMask::clear() {
    std::fill(tiles_.begin(), tiles_.end(), std::uint8_t{0});
}

bool TileMask::empty() const {
    return nextTile(0, columns_ * rows_) == columns_ * rows_;
}

bool TileMask::touchesAny(const PixelRect& rect) const {
    const Range range = tilesOf(rect);
    for (int row = range.top; row < range.bottom; ++row) {
        for (int column = range.left; column < range.right; ++column) {
            if (at(column, row)) return true;
        }
    }
    return false;
}

bool TileMask::coversAll(const PixelRect& rect) const {
    const Range range = tilesOf(rect);
    for (int row = range.top; row < range.bottom; ++row) {
        for (int column = range.left; column < range.right; ++column) {
            if (!at(column, row)) return false;
        }
    }
    return true;
}

std::vector<PixelRect> TileMask::rects() const {
    std::vector<PixelRect> result;
    std::size_t above = 0;  // first rectangle that ends at this row's top
    for (int row = 0; row < rows_; ++row) {
        const int top = row * kTile;
        const int height = std::min(kTile, frame_.height - top);
        const std::size_t current = result.size();
        std::size_t firstOpen = current;
        const int rowBegin = row * columns_;
        const auto next = [&](int column) {
            return nextTile(rowBegin + column, rowBegin + columns_) - rowBegin;
        };
        for (int column = next(0); column < columns_; column = next(column)) {
            const int left = column * kTile;
            while (column < columns_ && at(column, row)) ++column;
            const int width = std::min(column * kTile, frame_.width) - left;
            const auto same = std::find_if(
                result.begin() + static_cast<std::ptrdiff_t>(above),
                result.begin() + static_cast<std::ptrdiff_t>(current), [&](const PixelRect& r) {
                    return r.x == left && r.width == width && r.bottom() == top;
                });
            if (same != result.begin() + static_cast<std::ptrdiff_t>(current)) {
                same->height += height;
                firstOpen = std::min(firstOpen, static_cast<std::size_t>(same - result.begin()));
            } else {
                result.push_back({left, top, width, height});
            }
        }
        above = firstOpen;
    }
    return result;
}

void DamageHistory::reset(PixelSize frame) {
    frame_ = frame;
    recent_.clear();
    result_ = TileMask(frame);
}

const TileMask& DamageHistory::push(const TileMask& changed, int age) {
    recent_.insert(recent_.begin(), changed);
    result_.clear();
    if (age <= 0 || static_cast<std::size_t>(age) > recent_.size()) {
        result_.addAll();
    } else {
        for (int i = 0; i < age; ++i) result_.add(recent_[static_cast<std::size_t>(i)]);
    }
    if (recent_.size() > kRemembered) recent_.pop_back();
    return result_;
}

}  // namespace skavlo
