#pragma once

#include <memory>
#include <vector>

#include "overlay/render/render.h"
#include "platform/bitmap.h"

namespace skavlo {

// A square picture centred on the instance's place, with ever smaller versions of it for drawing it
// scaled down. `displaySize` is the side in pixels at scale 1; the picture itself may be finer.
class Sprite {
  public:
    Sprite(std::shared_ptr<const Bitmap> picture, double displaySize);

    [[nodiscard]] double displaySize() const { return displaySize_; }
    // Level 0 is the picture, every further one half as large.
    [[nodiscard]] const std::vector<std::shared_ptr<const Bitmap>>& levels() const {
        return levels_;
    }

  private:
    double displaySize_;
    std::vector<std::shared_ptr<const Bitmap>> levels_;
};

// What an emoji marker shows: the label faded to `labelAlpha`, and over it, when there is a disc,
// the circle, whose diameter at scale 1 is the side of the picture at scale 1.
struct EmojiDisc {
    Colour fill;
    Colour border;
    double borderWidth = 0;  // as a fraction of the side
};
std::shared_ptr<const Bitmap> composeEmoji(const Bitmap& label, double labelAlpha,
                                           const EmojiDisc* disc);

// A five-pointed star in yellow, one point up, in a square of `side` pixels.
std::shared_ptr<const Bitmap> starBitmap(int side);

}  // namespace skavlo
