#include "bench/cairo_peer.h"

#include <algorithm>
#include <cstddef>
#include <numbers>

namespace skavlo::bench {

CairoPeer::CairoPeer(PixelSize size)
    : surface_(cairo_image_surface_create(CAIRO_FORMAT_ARGB32, size.width, size.height)),
      cr_(cairo_create(surface_)) {}

CairoPeer::~CairoPeer() {
    cairo_destroy(cr_);
    cairo_surface_destroy(surface_);
}

void CairoPeer::clear() {
    cairo_save(cr_);
    cairo_set_operator(cr_, CAIRO_OPERATOR_CLEAR);
    cairo_paint(cr_);
    cairo_restore(cr_);
}

void CairoPeer::circles(const CircleStyle& style, std::span<const Instance> instances) {
    const auto colour = [this](const Colour& c, double opacity) {
        cairo_set_source_rgba(cr_, c.red, c.green, c.blue, c.alpha * opacity);
    };
    for (const Instance& i : instances) {
        const double scale = double{i.scale};
        const double radius = style.diameter / 2 * scale;
        const double width = style.borderWidth * scale;
        cairo_new_path(cr_);
        cairo_arc(cr_, i.x, i.y, radius, 0, 2 * std::numbers::pi);
        colour(style.fill, i.opacity);
        cairo_fill(cr_);
        if (!(width > 0)) continue;
        cairo_arc(cr_, i.x, i.y, radius - width / 2, 0, 2 * std::numbers::pi);
        cairo_set_line_width(cr_, width);
        colour(style.border, i.opacity);
        cairo_stroke(cr_);
    }
}

void CairoPeer::pictures(const Bitmap& picture, double side, cairo_filter_t filter,
                         std::span<const Instance> instances) {
    cairo_surface_t* source =
        cairo_image_surface_create(CAIRO_FORMAT_ARGB32, picture.size.width, picture.size.height);
    cairo_surface_flush(source);
    for (int y = 0; y < picture.size.height; ++y) {
        const auto row = picture.pixels.begin() + std::ptrdiff_t{y} * picture.size.width;
        std::copy_n(row, picture.size.width,
                    reinterpret_cast<std::uint32_t*>(cairo_image_surface_get_data(source) +
                                                     std::ptrdiff_t{y} *
                                                         cairo_image_surface_get_stride(source)));
    }
    cairo_surface_mark_dirty(source);
    for (const Instance& i : instances) {
        const double shown = side * double{i.scale};
        if (!(shown > 0)) continue;
        cairo_save(cr_);
        cairo_translate(cr_, i.x - shown / 2, i.y - shown / 2);
        cairo_scale(cr_, shown / picture.size.width, shown / picture.size.height);
        cairo_set_source_surface(cr_, source, 0, 0);
        cairo_pattern_set_filter(cairo_get_source(cr_), filter);
        cairo_paint_with_alpha(cr_, i.opacity);
        cairo_restore(cr_);
    }
    cairo_surface_destroy(source);
}

}  // namespace skavlo::bench
