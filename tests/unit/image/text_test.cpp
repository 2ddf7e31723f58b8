#include <cairo.h>
#include <fontconfig/fontconfig.h>
#include <pango/pangocairo.h>

#include <cmath>
#include <string>
#include <vector>

#include "tests/unit/image/picture_files.h"
#include "tests/unit/image/raster_fixture.h"

namespace skavlo {

namespace {

constexpr const char* kEmoji[] = {
    "🍎",       "👨‍👩‍👧", "🇨🇳",           "👍🏽", "❤️",
    "1️⃣", "👩🏻‍💻",    "🏴‍☠️"};

// What an own layout of the text says: pixels, and whether a font has every character.
struct Measure {
    double logicalTop, logicalHeight, inkTop, inkHeight, inkWidth;
    int unknownGlyphs;
};

Measure measure(const std::string& text, double fontPixels) {
    PangoContext* context = pango_font_map_create_context(pango_cairo_font_map_get_default());
    cairo_font_options_t* options = cairo_font_options_create();
    cairo_font_options_set_hint_style(options, CAIRO_HINT_STYLE_NONE);
    cairo_font_options_set_hint_metrics(options, CAIRO_HINT_METRICS_OFF);
    pango_cairo_context_set_font_options(context, options);
    PangoLayout* layout = pango_layout_new(context);
    PangoFontDescription* font = pango_font_description_from_string("sans-serif");
    pango_font_description_set_absolute_size(font, fontPixels * PANGO_SCALE);
    pango_layout_set_font_description(layout, font);
    pango_layout_set_text(layout, text.c_str(), -1);
    PangoRectangle ink, logical;
    pango_layout_get_extents(layout, &ink, &logical);
    const int unknown = pango_layout_get_unknown_glyphs_count(layout);
    const auto pixels = [](int units) { return static_cast<double>(units) / PANGO_SCALE; };
    pango_font_description_free(font);
    g_object_unref(layout);
    cairo_font_options_destroy(options);
    g_object_unref(context);
    return {pixels(logical.y),  pixels(logical.height), pixels(ink.y),
            pixels(ink.height), pixels(ink.width),      unknown};
}

bool hasColourEmoji() {
    PangoContext* context = pango_font_map_create_context(pango_cairo_font_map_get_default());
    PangoFontDescription* font = pango_font_description_from_string("Noto Color Emoji");
    PangoFont* loaded = pango_context_load_font(context, font);
    PangoFontDescription* actual = pango_font_describe(loaded);
    const std::string family = pango_font_description_get_family(actual);
    pango_font_description_free(actual);
    g_object_unref(loaded);
    pango_font_description_free(font);
    g_object_unref(context);
    return family == "Noto Color Emoji";
}

int countPixels(const Bitmap& bitmap, const std::function<bool(const Pixel&)>& matches) {
    int count = 0;
    for (int y = 0; y < bitmap.size.height; ++y)
        for (int x = 0; x < bitmap.size.width; ++x) count += matches(pixelAt(bitmap, x, y));
    return count;
}

bool isRed(const Pixel& p) {
    return p.alpha == 255 && p.red > 150 && p.green < 100 && p.blue < 100;
}
bool isColoured(const Pixel& p) {
    return std::abs(p.red - p.green) > 20 || std::abs(p.green - p.blue) > 20;
}

// Over a chequered ground, to see by eye what is clear and what is clipped.
bool writeContactSheet(const std::vector<Answer>& pictures, int box) {
    const int columns = 4;
    const int rows = (static_cast<int>(pictures.size()) + columns - 1) / columns;
    cairo_surface_t* sheet =
        cairo_image_surface_create(CAIRO_FORMAT_RGB24, columns * (box + 8), rows * (box + 8));
    cairo_t* cairo = cairo_create(sheet);
    cairo_set_source_rgb(cairo, 1, 0.7, 0.9);
    cairo_paint(cairo);
    for (std::size_t at = 0; at < pictures.size(); ++at) {
        const int x = static_cast<int>(at) % columns * (box + 8) + 4;
        const int y = static_cast<int>(at) / columns * (box + 8) + 4;
        cairo_set_source_rgb(cairo, 0.85, 0.9, 0.85);
        cairo_rectangle(cairo, x, y, box, box);
        cairo_fill(cairo);
        auto pixels = pictures[at]->pixels;
        cairo_surface_t* picture =
            cairo_image_surface_create_for_data(reinterpret_cast<unsigned char*>(pixels.data()),
                                                CAIRO_FORMAT_ARGB32, box, box, box * 4);
        cairo_set_source_surface(cairo, picture, x, y);
        cairo_paint(cairo);
        cairo_surface_finish(picture);
        cairo_surface_destroy(picture);
    }
    const bool written =
        cairo_surface_write_to_png(sheet, SKAVLO_CONTACT_SHEET) == CAIRO_STATUS_SUCCESS;
    cairo_destroy(cairo);
    cairo_surface_destroy(sheet);
    return written;
}

}  // namespace

// The font libraries keep what they have loaded, partly on threads of their own, until the end.
// NOLINTNEXTLINE(bugprone-reserved-identifier): the name is the sanitizer's.
extern "C" __attribute__((visibility("default"))) const char* __lsan_default_suppressions() {
    return "leak:libfontconfig\nleak:libpango\n";
}

TEST_F(RasterTest, EmojiIsInColour) {
    if (!hasColourEmoji()) GTEST_SKIP() << "the colour emoji font is not installed";
    const Answer answer = text("🍎", 120, 96);
    ASSERT_TRUE(answer);
    EXPECT_EQ(answer->size, (PixelSize{120, 120}));
    EXPECT_GT(countPixels(*answer, isRed), 120 * 120 / 10);
}

TEST_F(RasterTest, EmojiSequencesAreOneGlyph) {
    if (!hasColourEmoji()) GTEST_SKIP() << "the colour emoji font is not installed";
    const Answer apple = text("🍎", 400, 96);
    ASSERT_TRUE(apple);
    const int one = inkOf(*apple).width;
    for (const char* const emoji : kEmoji) {
        const Answer answer = text(emoji, 400, 96);
        ASSERT_TRUE(answer) << emoji;
        const int width = inkOf(*answer).width;
        EXPECT_GT(width, one * 6 / 10) << emoji;
        EXPECT_LT(width, one * 14 / 10) << emoji;
    }
}

// A label of this size beside its font is how a marker shows its text.
TEST_F(RasterTest, EmojiFitABoxOfFiveQuartersOfTheFont) {
    if (!hasColourEmoji()) GTEST_SKIP() << "the colour emoji font is not installed";
    for (const int box : {10, 11, 13, 17, 25, 33, 60, 61, 97, 225, 450, 675, 900}) {
        const Answer answer = text("🍎", box, box * 0.8);
        ASSERT_TRUE(answer);
        EXPECT_GT(countPixels(*answer, isColoured), box * box / 4) << box;
        const PixelRect ink = inkOf(*answer, 16);
        EXPECT_GT(ink.height, box * 3 / 4) << box;
        EXPECT_NEAR(ink.x + ink.width / 2.0, box / 2.0, box * 0.02 + 1) << box;
    }
}

TEST_F(RasterTest, ContactSheetOfTexts) {
    std::vector<Answer> pictures;
    for (const char* const emoji : kEmoji) pictures.push_back(text(emoji, 200, 160));
    for (const char* const other :
         {"触摸", "Ag", "字", "A long text that does not fit", "日本語", "😀 ok", "سلام", "⚫"})
        pictures.push_back(text(other, 200, 60));
    for (const Answer& picture : pictures) {
        ASSERT_TRUE(picture);
        EXPECT_FALSE(inkOf(*picture).empty());
    }
    EXPECT_TRUE(writeContactSheet(pictures, 200));
}

TEST_F(RasterTest, ChineseIsDrawnInBlack) {
    if (measure("触摸", 40).unknownGlyphs > 0) GTEST_SKIP() << "no font here has Chinese";
    const Answer both = text("触摸", 120, 40);
    const Answer first = text("触", 120, 40);
    const Answer second = text("摸", 120, 40);
    ASSERT_TRUE(both && first && second);
    EXPECT_NE(first->pixels, second->pixels);
    EXPECT_NEAR(inkOf(*both).width, measure("触摸", 40).inkWidth, 2.5);
    EXPECT_GT(countPixels(*both, [](const Pixel& p) { return p.alpha > 200; }), 300);
    EXPECT_EQ(countPixels(*both, [](const Pixel& p) { return p.red + p.green + p.blue > 0; }), 0);
}

TEST_F(RasterTest, LineIsCentredByItsLogicalRectangle) {
    for (const char* const letter : {"O", "I", "x", "g", "中"}) {
        const Answer answer = text(letter, 101, 50);
        ASSERT_TRUE(answer);
        const PixelRect ink = inkOf(*answer, 64);
        EXPECT_NEAR(ink.x + ink.width / 2.0, 50.5, 1) << letter;
        const Measure own = measure(letter, 50);
        const double top = (101 - own.logicalHeight) / 2 + own.inkTop - own.logicalTop;
        EXPECT_NEAR(ink.y, top, 1) << letter;
        EXPECT_NEAR(ink.bottom(), top + own.inkHeight, 1) << letter;
    }
}

TEST_F(RasterTest, FontSizeIsInPixels) {
    for (const double size : {10.0, 33.3, 80.0}) {
        const Answer answer = text("H", 120, size);
        ASSERT_TRUE(answer);
        EXPECT_NEAR(inkOf(*answer, 64).height, measure("H", size).inkHeight, 1) << size;
    }
}

TEST_F(RasterTest, LongTextIsEllipsisedInTheBox) {
    const std::string beginning = "iiiiiiii";
    const Answer answer = text(beginning + std::string(3000, 'W'), 100, 20);
    ASSERT_TRUE(answer);
    const PixelRect ink = inkOf(*answer);
    EXPECT_GE(ink.x, 0);
    EXPECT_LE(ink.right(), 100);
    EXPECT_GT(ink.width, 60);
    // One line of it, and its end is the dots: low ink only.
    EXPECT_LT(ink.height, 30);
    int lowest = 100;
    for (int y = 0; y < 100; ++y)
        for (int x = ink.right() - 10; x < ink.right(); ++x)
            if (pixelAt(*answer, x, y).alpha > 64) lowest = std::min(lowest, y);
    EXPECT_GT(lowest, 50);
}

TEST_F(RasterTest, LineBreaksAndControlsAreSpaces) {
    const Answer spaces = text("a b c d", 200, 30);
    ASSERT_TRUE(spaces);
    for (const char* const other : {"a\nb\r\nc\rd", "a\u2028b\u2029c\u0085d", "a\tb\vc\fd",
                                    "a\x01"
                                    "b\x7f"
                                    "c\x1b"
                                    "d"}) {
        const Answer answer = text(other, 200, 30);
        ASSERT_TRUE(answer);
        EXPECT_EQ(answer->pixels, spaces->pixels) << other;
    }
}

TEST_F(RasterTest, EmptyTextIsTransparent) {
    for (const char* const nothing : {"", " ", "\n"}) {
        const Answer answer = text(nothing, 50, 30);
        ASSERT_TRUE(answer);
        EXPECT_EQ(answer->size, (PixelSize{50, 50}));
        EXPECT_TRUE(inkOf(*answer).empty());
    }
}

TEST_F(RasterTest, InvalidOrTooLongTextHasNoPicture) {
    for (const std::string& invalid :
         {std::string("\xff"), std::string("a\xc3"), std::string("\xed\xa0\x80"),
          std::string("a\0b", 3), std::string("\xf4\x90\x80\x80")})
        EXPECT_FALSE(text(invalid, 50, 30));
    EXPECT_TRUE(text(std::string(4096, 'a'), 50, 30));
    EXPECT_FALSE(text(std::string(4097, 'a'), 50, 30));
}

}  // namespace skavlo
