#include "tools/demo_desktop.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace skavlo {

namespace {

struct Rgb {
    double red;
    double green;
    double blue;
};

constexpr Rgb kTopLeft{38, 70, 118};
constexpr Rgb kBottomRight{196, 110, 132};
constexpr Rgb kPaper{246, 246, 248};
constexpr Rgb kTitle{222, 224, 230};
constexpr Rgb kText{150, 156, 168};
constexpr Rgb kAccent{88, 140, 236};

constexpr double kCorner = 10;
constexpr double kTitleHeight = 34;

Rgb mix(Rgb from, Rgb to, double share) {
    return {from.red + (to.red - from.red) * share, from.green + (to.green - from.green) * share,
            from.blue + (to.blue - from.blue) * share};
}

std::uint32_t packed(Rgb colour) {
    const auto byte = [](double value) { return static_cast<std::uint32_t>(std::lround(value)); };
    return 0xFF000000 | byte(colour.red) << 16 | byte(colour.green) << 8 | byte(colour.blue);
}

Rgb unpacked(std::uint32_t pixel) {
    return {static_cast<double>(pixel >> 16 & 0xFF), static_cast<double>(pixel >> 8 & 0xFF),
            static_cast<double>(pixel & 0xFF)};
}

// How much of a pixel a rectangle with round corners covers: its distance to the outline, cut off.
double coverage(Point pixel, Rect rect, double corner) {
    const double halfWidth = rect.size.width / 2;
    const double halfHeight = rect.size.height / 2;
    const double x = std::abs(pixel.x - rect.origin.x - halfWidth) - halfWidth + corner;
    const double y = std::abs(pixel.y - rect.origin.y - halfHeight) - halfHeight + corner;
    const double distance =
        std::hypot(std::max(x, 0.0), std::max(y, 0.0)) + std::min(std::max(x, y), 0.0) - corner;
    return std::clamp(0.5 - distance, 0.0, 1.0);
}

void fill(Bitmap& bitmap, Rect rect, double corner, Rgb colour) {
    const int left = std::max(static_cast<int>(rect.origin.x) - 1, 0);
    const int top = std::max(static_cast<int>(rect.origin.y) - 1, 0);
    const int right =
        std::min(static_cast<int>(rect.origin.x + rect.size.width) + 2, bitmap.size.width);
    const int bottom =
        std::min(static_cast<int>(rect.origin.y + rect.size.height) + 2, bitmap.size.height);
    for (int y = top; y < bottom; ++y) {
        for (int x = left; x < right; ++x) {
            const double share = coverage({x + 0.5, y + 0.5}, rect, corner);
            auto& pixel = bitmap.pixels[static_cast<std::size_t>(y) * bitmap.size.width + x];
            pixel = packed(mix(unpacked(pixel), colour, share));
        }
    }
}

void drawWindow(Bitmap& bitmap, Rect frame, int textLines) {
    fill(bitmap, frame, kCorner, kPaper);
    fill(bitmap, {frame.origin, {frame.size.width, kTitleHeight}}, kCorner, kTitle);
    const double left = frame.origin.x + 24;
    const double top = frame.origin.y + kTitleHeight + 26;
    fill(bitmap, {{left, top}, {frame.size.width * 0.35, 16}}, 4, kAccent);
    for (int line = 0; line < textLines; ++line) {
        const double share = line % 4 == 3 ? 0.45 : 0.86 - 0.06 * (line % 3);
        fill(bitmap, {{left, top + 42 + line * 26}, {frame.size.width * share, 10}}, 4, kText);
    }
}

void putRows(const rig::Display& display, xcb_pixmap_t pixmap, xcb_gcontext_t context,
             const Bitmap& picture) {
    constexpr int kRows = 32;  // well below the longest request of any server
    const auto* bytes = reinterpret_cast<const std::uint8_t*>(picture.pixels.data());
    const std::size_t stride = static_cast<std::size_t>(picture.size.width) * 4;
    for (int y = 0; y < picture.size.height; y += kRows) {
        const int rows = std::min(kRows, picture.size.height - y);
        xcb_put_image(display.get(), XCB_IMAGE_FORMAT_Z_PIXMAP, pixmap, context,
                      static_cast<std::uint16_t>(picture.size.width),
                      static_cast<std::uint16_t>(rows), 0, static_cast<std::int16_t>(y), 0,
                      display.screen().root_depth, static_cast<std::uint32_t>(stride * rows),
                      bytes + stride * y);
    }
}

}  // namespace

Bitmap drawDesktop(PixelSize size) {
    Bitmap bitmap{size, {}};
    bitmap.pixels.reserve(static_cast<std::size_t>(size.width) * size.height);
    for (int y = 0; y < size.height; ++y) {
        for (int x = 0; x < size.width; ++x) {
            const double share =
                (static_cast<double>(x) / size.width + static_cast<double>(y) / size.height) / 2;
            bitmap.pixels.push_back(packed(mix(kTopLeft, kBottomRight, share)));
        }
    }
    const double width = size.width;
    const double height = size.height;
    drawWindow(bitmap, {{width * 0.06, height * 0.14}, {width * 0.42, height * 0.68}}, 14);
    drawWindow(bitmap, {{width * 0.56, height * 0.24}, {width * 0.36, height * 0.56}}, 10);
    return bitmap;
}

bool showDesktop(const rig::Display& display, const Bitmap& picture) {
    xcb_connection_t* connection = display.get();
    const xcb_window_t root = display.root();
    const xcb_pixmap_t pixmap = xcb_generate_id(connection);
    const xcb_gcontext_t context = xcb_generate_id(connection);
    xcb_create_pixmap(connection, display.screen().root_depth, pixmap, root,
                      static_cast<std::uint16_t>(picture.size.width),
                      static_cast<std::uint16_t>(picture.size.height));
    xcb_create_gc(connection, context, pixmap, 0, nullptr);
    putRows(display, pixmap, context, picture);
    xcb_change_window_attributes(connection, root, XCB_CW_BACK_PIXMAP, &pixmap);
    // Where compositing managers look for the desktop's picture.
    for (const char* property : {"_XROOTPMAP_ID", "ESETROOT_PMAP_ID"}) {
        xcb_change_property(connection, XCB_PROP_MODE_REPLACE, root, display.atom(property),
                            XCB_ATOM_PIXMAP, 32, 1, &pixmap);
    }
    xcb_set_close_down_mode(connection, XCB_CLOSE_DOWN_RETAIN_PERMANENT);
    xcb_clear_area(connection, 0, root, 0, 0, 0, 0);
    return display.sync();
}

}  // namespace skavlo
