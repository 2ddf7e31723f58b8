// The same pictures drawn with Cairo, for comparison in the same run.
#pragma once

#include <cairo.h>

#include <span>

#include "overlay/render/render.h"
#include "overlay/render/sprite.h"

namespace skavlo::bench {

class CairoPeer {
  public:
    explicit CairoPeer(PixelSize size);
    ~CairoPeer();
    CairoPeer(const CairoPeer&) = delete;
    CairoPeer& operator=(const CairoPeer&) = delete;

    void clear();
    // An arc filled and an arc stroked, opacity in the colours' alpha.
    void circles(const CircleStyle& style, std::span<const Instance> instances);
    // Scaled, set as source, painted with alpha.
    void pictures(const Bitmap& picture, double side, cairo_filter_t filter,
                  std::span<const Instance> instances);

  private:
    cairo_surface_t* surface_;
    cairo_t* cr_;
};

}  // namespace skavlo::bench
