#include <pango/pangocairo.h>

#include <memory>

#include "platform/linux/image/picture.h"

namespace skavlo {

namespace {

struct Release {
    void operator()(cairo_surface_t* surface) const { cairo_surface_destroy(surface); }
    void operator()(cairo_t* cairo) const { cairo_destroy(cairo); }
    void operator()(cairo_font_options_t* options) const { cairo_font_options_destroy(options); }
    void operator()(PangoLayout* layout) const { g_object_unref(layout); }
    void operator()(PangoFontDescription* font) const { pango_font_description_free(font); }
};
template <typename T>
using Handle = std::unique_ptr<T, Release>;

// Pango would begin a new line, or draw a box, for each of these.
bool isControl(gunichar character) {
    constexpr gunichar kLineSeparator = 0x2028;
    constexpr gunichar kParagraphSeparator = 0x2029;
    return g_unichar_iscntrl(character) || character == kLineSeparator ||
           character == kParagraphSeparator;
}

std::string singleLine(const std::string& text) {
    std::string line;
    const char* const end = text.data() + text.size();
    for (const char* at = text.data(); at < end; at = g_utf8_next_char(at)) {
        const bool lineFeedOfPair = *at == '\n' && at > text.data() && at[-1] == '\r';
        if (lineFeedOfPair) continue;
        if (isControl(g_utf8_get_char(at)))
            line += ' ';
        else
            line.append(at, static_cast<const char*>(g_utf8_next_char(at)));
    }
    return line;
}

// Grey coverage only, since what lies below is not known; unhinted, so that the line has the same
// shape at every size.
void setFontOptions(PangoContext* context) {
    const Handle<cairo_font_options_t> options(cairo_font_options_create());
    cairo_font_options_set_antialias(options.get(), CAIRO_ANTIALIAS_GRAY);
    cairo_font_options_set_hint_style(options.get(), CAIRO_HINT_STYLE_NONE);
    cairo_font_options_set_hint_metrics(options.get(), CAIRO_HINT_METRICS_OFF);
    pango_cairo_context_set_font_options(context, options.get());
    pango_context_set_round_glyph_positions(context, FALSE);
}

// The generic family: fontconfig knows the fonts of each script that are installed here, and Pango
// asks it for the emoji font wherever the text has emoji presentation.
Handle<PangoLayout> layOut(cairo_t* cairo, const std::string& line, int box, double fontPixels) {
    Handle<PangoLayout> layout(pango_cairo_create_layout(cairo));
    setFontOptions(pango_layout_get_context(layout.get()));
    const Handle<PangoFontDescription> font(pango_font_description_from_string("sans-serif"));
    pango_font_description_set_absolute_size(font.get(), fontPixels * PANGO_SCALE);
    pango_layout_set_font_description(layout.get(), font.get());
    pango_layout_set_width(layout.get(), box * PANGO_SCALE);
    pango_layout_set_ellipsize(layout.get(), PANGO_ELLIPSIZE_END);
    pango_layout_set_alignment(layout.get(), PANGO_ALIGN_CENTER);
    pango_layout_set_text(layout.get(), line.data(), static_cast<int>(line.size()));
    return layout;
}

void drawCentred(cairo_t* cairo, PangoLayout* layout, int box) {
    PangoRectangle logical;
    pango_layout_get_extents(layout, nullptr, &logical);
    const double top = (box - static_cast<double>(logical.height) / PANGO_SCALE) / 2 -
                       static_cast<double>(logical.y) / PANGO_SCALE;
    cairo_set_source_rgb(cairo, 0, 0, 0);
    cairo_move_to(cairo, 0, top);
    pango_cairo_show_layout(cairo, layout);
}

}  // namespace

std::optional<Picture> drawText(const std::string& text, int box, double fontPixels) {
    if (!g_utf8_validate_len(text.data(), text.size(), nullptr)) return std::nullopt;
    const auto side = static_cast<std::size_t>(box);
    Picture picture{box, box, std::vector<std::uint32_t>(side * side)};
    // Cairo's format is the picture's own: 32 bits per pixel in machine order, premultiplied.
    const Handle<cairo_surface_t> surface(
        cairo_image_surface_create_for_data(reinterpret_cast<unsigned char*>(picture.pixels.data()),
                                            CAIRO_FORMAT_ARGB32, box, box, box * 4));
    const Handle<cairo_t> cairo(cairo_create(surface.get()));
    const Handle<PangoLayout> layout = layOut(cairo.get(), singleLine(text), box, fontPixels);
    drawCentred(cairo.get(), layout.get(), box);
    cairo_surface_flush(surface.get());
    if (cairo_status(cairo.get()) != CAIRO_STATUS_SUCCESS) return std::nullopt;
    return picture;
}

}  // namespace skavlo
