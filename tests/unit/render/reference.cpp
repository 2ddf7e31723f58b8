#include "reference.h"

#include <pango/pangocairo.h>

#include <algorithm>
#include <cmath>
#include <functional>
#include <memory>
#include <numbers>

// Fontconfig keeps its caches until the process ends.
extern "C" __attribute__((visibility("default"))) const char* __lsan_default_suppressions();
extern "C" const char* __lsan_default_suppressions() {
    return "leak:libfontconfig\n";
}

namespace skavlo::reference {
namespace {

using Surface = std::unique_ptr<cairo_surface_t, decltype(&cairo_surface_destroy)>;
using Context = std::unique_ptr<cairo_t, decltype(&cairo_destroy)>;
using Levels = std::vector<std::array<double, 4>>;

Surface newSurface(PixelSize size) {
    return {cairo_image_surface_create(CAIRO_FORMAT_ARGB32, size.width, size.height),
            cairo_surface_destroy};
}

int finenessFor(PixelSize size) {
    return std::max(size.width, size.height) <= 200 ? 16 : 8;
}

Levels average(cairo_surface_t* fine, PixelSize size, int fineness) {
    cairo_surface_flush(fine);
    const unsigned char* data = cairo_image_surface_get_data(fine);
    const int stride = cairo_image_surface_get_stride(fine);
    Levels levels(std::size_t(size.width) * std::size_t(size.height));
    const double part = 1.0 / (fineness * fineness);
    for (int y = 0; y < size.height * fineness; ++y) {
        for (int x = 0; x < size.width * fineness; ++x) {
            auto& sum = levels[std::size_t(y / fineness) * std::size_t(size.width) +
                               std::size_t(x / fineness)];
            const unsigned char* pixel = data + std::ptrdiff_t{y} * stride + std::ptrdiff_t{x} * 4;
            for (std::size_t c = 0; c < 4; ++c) sum[c] += part * pixel[c];
        }
    }
    return levels;
}

Levels drawFinely(PixelSize size, const std::function<void(cairo_t*)>& draw) {
    const int fineness = finenessFor(size);
    const Surface fine = newSurface({size.width * fineness, size.height * fineness});
    const Context cr(cairo_create(fine.get()), cairo_destroy);
    cairo_scale(cr.get(), fineness, fineness);
    cairo_set_tolerance(cr.get(), 0.01);
    draw(cr.get());
    return average(fine.get(), size, fineness);
}

void disc(cairo_t* cr, const Instance& i, double radius) {
    cairo_new_path(cr);
    cairo_arc(cr, i.x, i.y, radius, 0, 2 * std::numbers::pi);
}

// What a drawing in white covers, 0 to 1, one value per fine pixel.
using Mask = std::vector<float>;

Mask drawMask(PixelSize size, const std::function<void(cairo_t*)>& path) {
    const int fineness = finenessFor(size);
    const PixelSize fineSize{size.width * fineness, size.height * fineness};
    const Surface fine{cairo_image_surface_create(CAIRO_FORMAT_A8, fineSize.width, fineSize.height),
                       cairo_surface_destroy};
    const Context cr(cairo_create(fine.get()), cairo_destroy);
    cairo_scale(cr.get(), fineness, fineness);
    cairo_set_tolerance(cr.get(), 0.01);
    path(cr.get());
    cairo_fill(cr.get());
    cairo_surface_flush(fine.get());
    const unsigned char* data = cairo_image_surface_get_data(fine.get());
    const int stride = cairo_image_surface_get_stride(fine.get());
    Mask mask;
    mask.reserve(std::size_t(fineSize.width) * std::size_t(fineSize.height));
    for (int y = 0; y < fineSize.height; ++y) {
        const unsigned char* row = data + std::ptrdiff_t{y} * stride;
        for (int x = 0; x < fineSize.width; ++x) mask.push_back(float(row[x]) / 255);
    }
    return mask;
}

std::array<double, 4> premultiplied(const Colour& c) {
    return {c.blue * c.alpha, c.green * c.alpha, c.red * c.alpha, c.alpha};
}

// Cairo's masks, composed without its rounding to whole levels, which is half a level per layer.
void composeLook(Picture& picture, const CircleStyle& style, const Mask& disc, const Mask& ring) {
    const auto fill = premultiplied(style.fill);
    const auto border = premultiplied(style.border);
    const int fineness = finenessFor(picture.size);
    const double part = 255.0 / (fineness * fineness);
    const std::size_t width = std::size_t(picture.size.width * fineness);
    for (std::size_t i = 0; i < disc.size(); ++i) {
        if (!(disc[i] > 0)) continue;
        auto& sum =
            picture.pixels[picture.index(int(i % width) / fineness, int(i / width) / fineness)];
        const double ringCover = ring.empty() ? 0 : double{ring[i]};
        for (std::size_t c = 0; c < 4; ++c) {
            const double below = fill[c] * double{disc[i]};
            sum[c] += part * (border[c] * ringCover + below * (1 - border[3] * ringCover));
        }
    }
}

void markPartial(Picture& picture, const Mask& mask) {
    const int fineness = finenessFor(picture.size);
    const std::size_t width = std::size_t(picture.size.width * fineness);
    std::vector<double> covered(picture.pixels.size());
    for (std::size_t i = 0; i < mask.size(); ++i) {
        covered[picture.index(int(i % width) / fineness, int(i / width) / fineness)] +=
            double{mask[i]} / (fineness * fineness);
    }
    for (std::size_t i = 0; i < covered.size(); ++i) {
        if (covered[i] > 0.001 && covered[i] < 0.999) picture.edge[i] = true;
    }
}

Surface surfaceOf(const Bitmap& bitmap) {
    Surface surface = newSurface(bitmap.size);
    const int stride = cairo_image_surface_get_stride(surface.get()) / 4;
    auto* out = reinterpret_cast<std::uint32_t*>(cairo_image_surface_get_data(surface.get()));
    for (int y = 0; y < bitmap.size.height; ++y) {
        std::copy_n(bitmap.pixels.begin() + std::ptrdiff_t{y} * bitmap.size.width,
                    bitmap.size.width, out + std::ptrdiff_t{y} * stride);
    }
    cairo_surface_mark_dirty(surface.get());
    return surface;
}

Bitmap bitmapOf(cairo_surface_t* surface, PixelSize size) {
    cairo_surface_flush(surface);
    Bitmap bitmap = blank(size);
    const int stride = cairo_image_surface_get_stride(surface) / 4;
    const auto* in = reinterpret_cast<std::uint32_t*>(cairo_image_surface_get_data(surface));
    for (int y = 0; y < size.height; ++y) {
        std::copy_n(in + std::ptrdiff_t{y} * stride, size.width,
                    bitmap.pixels.begin() + std::ptrdiff_t{y} * size.width);
    }
    return bitmap;
}

void setSource(cairo_t* cr, cairo_surface_t* source, int texels, double side, const Instance& i,
               cairo_filter_t filter) {
    const double shown = side * i.scale;
    cairo_translate(cr, i.x - shown / 2, i.y - shown / 2);
    cairo_scale(cr, shown / texels, shown / texels);
    cairo_set_source_surface(cr, source, 0, 0);
    cairo_pattern_set_filter(cairo_get_source(cr), filter);
}

void markSteps(Picture& picture, double step) {
    const auto differs = [&](std::size_t a, std::size_t b) {
        for (std::size_t c = 0; c < 4; ++c) {
            if (std::abs(picture.pixels[a][c] - picture.pixels[b][c]) > step) return true;
        }
        return false;
    };
    for (int y = 0; y < picture.size.height; ++y) {
        for (int x = 0; x < picture.size.width; ++x) {
            const std::size_t here = picture.index(x, y);
            for (const PixelPoint n : {PixelPoint{x + 1, y}, PixelPoint{x, y + 1}}) {
                if (n.x >= picture.size.width || n.y >= picture.size.height) continue;
                const std::size_t there = picture.index(n.x, n.y);
                if (differs(here, there)) picture.edge[here] = picture.edge[there] = true;
            }
        }
    }
}

void fade(Levels& levels, double opacity) {
    for (auto& pixel : levels) {
        for (double& channel : pixel) channel *= opacity;
    }
}

}  // namespace

Picture circle(PixelSize size, const CircleStyle& style, const Instance& instance) {
    const std::size_t count = std::size_t(size.width) * std::size_t(size.height);
    Picture picture{size, Levels(count), std::vector<bool>(count)};
    const double radius = style.diameter / 2 * instance.scale;
    const double inner = radius - style.borderWidth * instance.scale;
    const Mask whole = drawMask(size, [&](cairo_t* cr) { disc(cr, instance, radius); });
    markPartial(picture, whole);
    Mask ring;
    if (style.borderWidth > 0) {
        ring = drawMask(size, [&](cairo_t* cr) {
            disc(cr, instance, radius);
            if (!(inner > 0)) return;
            cairo_new_sub_path(cr);
            cairo_arc_negative(cr, instance.x, instance.y, inner, 0, -2 * std::numbers::pi);
        });
        if (inner > 0) {
            markPartial(picture, drawMask(size, [&](cairo_t* cr) { disc(cr, instance, inner); }));
        }
    }
    composeLook(picture, style, whole, ring);
    fade(picture.pixels, instance.opacity);
    return picture;
}

Picture sprite(PixelSize size, const Bitmap& source, double side, const Instance& instance,
               double edgeStep) {
    const Surface surface = surfaceOf(source);
    Picture picture{size,
                    drawFinely(size,
                               [&](cairo_t* cr) {
                                   setSource(cr, surface.get(), source.size.width, side, instance,
                                             CAIRO_FILTER_NEAREST);
                                   cairo_paint(cr);
                               }),
                    std::vector<bool>(std::size_t(size.width) * std::size_t(size.height))};
    fade(picture.pixels, instance.opacity);
    markSteps(picture, edgeStep);
    return picture;
}

Bitmap bilinearSprite(PixelSize size, const Bitmap& picture, double side,
                      const Instance& instance) {
    const Surface source = surfaceOf(picture);
    const Surface drawn = newSurface(size);
    const Context cr(cairo_create(drawn.get()), cairo_destroy);
    setSource(cr.get(), source.get(), picture.size.width, side, instance, CAIRO_FILTER_BILINEAR);
    cairo_paint_with_alpha(cr.get(), instance.opacity);
    return bitmapOf(drawn.get(), size);
}

// Five straight lines across; what they wind around is filled.
Picture star(PixelSize size, double width, const Colour& colour) {
    constexpr double kFifth = 2 * std::numbers::pi / 5;
    const double radius = width / (2 * std::sin(kFifth));
    const double height = radius * (1 + std::cos(kFifth / 2));
    const double middle = (size.height - height) / 2 + radius;
    const Mask mask = drawMask(size, [&](cairo_t* cr) {
        for (int i = 0; i < 5; ++i) {
            const double angle = 2 * i * kFifth;
            cairo_line_to(cr, size.width / 2.0 + radius * std::sin(angle),
                          middle - radius * std::cos(angle));
        }
        cairo_close_path(cr);
    });
    const std::size_t count = std::size_t(size.width) * std::size_t(size.height);
    Picture picture{size, Levels(count), std::vector<bool>(count)};
    markPartial(picture, mask);
    composeLook(picture, {0, 0, colour, {}}, mask, {});
    return picture;
}

Difference difference(const Picture& expected, const Bitmap& drawn) {
    Difference result;
    double sum = 0;
    for (std::size_t i = 0; i < drawn.pixels.size(); ++i) {
        for (std::size_t c = 0; c < 4; ++c) {
            const double level = double(drawn.pixels[i] >> (8 * c) & 255);
            const double error = std::abs(level - expected.pixels[i][c]);
            if (expected.edge[i]) {
                sum += error;
            } else {
                result.otherMost = std::max(result.otherMost, error);
            }
        }
        if (expected.edge[i]) ++result.edgePixels;
    }
    result.edgeMean = result.edgePixels > 0 ? sum / (4.0 * result.edgePixels) : 0;
    return result;
}

Bitmap blank(PixelSize size) {
    return {size, std::vector<std::uint32_t>(std::size_t(size.width) * std::size_t(size.height))};
}

RenderTarget targetOf(Bitmap& bitmap) {
    return {bitmap.pixels.data(), bitmap.size.width, bitmap.size};
}

void writePng(const Bitmap& bitmap, const std::string& path) {
    cairo_surface_write_to_png(surfaceOf(bitmap).get(), path.c_str());
}

Bitmap textPicture(const std::string& utf8, int side) {
    const Surface surface = newSurface({side, side});
    const Context cr(cairo_create(surface.get()), cairo_destroy);
    PangoLayout* layout = pango_cairo_create_layout(cr.get());
    PangoFontDescription* font = pango_font_description_from_string("Noto Color Emoji");
    pango_font_description_set_absolute_size(font, side * 0.8 * PANGO_SCALE);
    pango_layout_set_font_description(layout, font);
    pango_layout_set_text(layout, utf8.c_str(), -1);
    int width = 0;
    int height = 0;
    pango_layout_get_pixel_size(layout, &width, &height);
    cairo_move_to(cr.get(), (side - width) / 2.0, (side - height) / 2.0);
    pango_cairo_show_layout(cr.get(), layout);
    pango_font_description_free(font);
    g_object_unref(layout);
    return bitmapOf(surface.get(), {side, side});
}

}  // namespace skavlo::reference
