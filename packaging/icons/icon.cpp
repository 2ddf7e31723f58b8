// Draws the application's icon: the rings that spread from a touch. 180 by 180 pixels, square; who
// shows it rounds its corners.
#include <cairo.h>

#include <cstdio>

namespace {

constexpr double kSide = 180;
constexpr double kTouchX = 90;
constexpr double kTouchY = 90;
constexpr double kFullTurn = 6.283185307179586;

void paintGround(cairo_t* cr) {
    cairo_pattern_t* ground = cairo_pattern_create_linear(0, 0, 0, kSide);
    cairo_pattern_add_color_stop_rgb(ground, 0, 143 / 255.0, 126 / 255.0, 166 / 255.0);
    cairo_pattern_add_color_stop_rgb(ground, 1, 48 / 255.0, 42 / 255.0, 56 / 255.0);
    cairo_set_source(cr, ground);
    cairo_paint(cr);
    cairo_pattern_destroy(ground);
}

void paintRing(cairo_t* cr, double radius, double width, double alpha) {
    cairo_new_path(cr);
    cairo_arc(cr, kTouchX, kTouchY, radius, 0, kFullTurn);
    cairo_set_source_rgba(cr, 1, 1, 1, alpha);
    cairo_set_line_width(cr, width);
    cairo_stroke(cr);
}

void paintDot(cairo_t* cr) {
    constexpr double kRadius = 25;
    cairo_pattern_t* glow =
        cairo_pattern_create_radial(kTouchX, kTouchY, kRadius, kTouchX, kTouchY, kRadius + 16);
    cairo_pattern_add_color_stop_rgba(glow, 0, 1, 1, 1, 0.45);
    cairo_pattern_add_color_stop_rgba(glow, 1, 1, 1, 1, 0);
    cairo_set_source(cr, glow);
    cairo_paint(cr);
    cairo_pattern_destroy(glow);
    cairo_new_path(cr);
    cairo_arc(cr, kTouchX, kTouchY, kRadius, 0, kFullTurn);
    cairo_set_source_rgb(cr, 1, 1, 1);
    cairo_fill(cr);
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 2) {
        std::fputs("usage: icon FILE.png\n", stderr);
        return 2;
    }
    cairo_surface_t* surface = cairo_image_surface_create(
        CAIRO_FORMAT_RGB24, static_cast<int>(kSide), static_cast<int>(kSide));
    cairo_t* cr = cairo_create(surface);
    paintGround(cr);
    paintRing(cr, 72, 5, 0.28);
    paintRing(cr, 55, 6, 0.5);
    paintRing(cr, 39, 7, 0.8);
    paintDot(cr);
    cairo_destroy(cr);
    const cairo_status_t status = cairo_surface_write_to_png(surface, argv[1]);
    cairo_surface_destroy(surface);
    if (status == CAIRO_STATUS_SUCCESS) return 0;
    std::fprintf(stderr, "icon: %s: %s\n", argv[1], cairo_status_to_string(status));
    return 1;
}
