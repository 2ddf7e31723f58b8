// Many circles are drawn in bands of rows, one after the other: pixels of a band stay in the
// processor's second-level cache while circle after circle goes over them. Internal to the
// renderer.
#pragma once

#include <vector>

#include "overlay/render/render.h"

namespace skavlo {

struct Band {
    PixelRect clip;
    std::span<const Instance> instances;  // those that reach into the clip, in their order
};

class Bands {
  public:
    // `radius` is that of scale 1, in pixels. The instances must outlive the bands, and so must
    // the bands what they hand out.
    Bands(const PixelRect& area, std::span<const Instance> instances, float radius);

    [[nodiscard]] std::span<const Band> all() const {
        return bands_.empty() ? std::span(&whole_, 1) : std::span(bands_);
    }

  private:
    Band whole_;  // the only one, without any memory of its own, for few
    std::vector<Instance> sorted_;
    std::vector<Band> bands_;
};

}  // namespace skavlo
