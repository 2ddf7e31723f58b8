// Picture files for the tests, and the drawing that serves as their independent reference.
#pragma once

#include <cairo.h>

#include <functional>
#include <string>
#include <vector>

#include "platform/bitmap.h"

namespace skavlo {

// Draws into the unit square.
using Drawing = std::function<void(cairo_t*)>;

// A drawing scaled to these pixels, premultiplied, each pixel the mean of 16 x 16 samples.
Bitmap drawReference(const Drawing& drawing, int width, int height);

// kind: one of the formats that the image library writes ("png", "jpeg", "tiff", "bmp").
bool saveDrawing(const Drawing& drawing, int width, int height, const std::string& path,
                 const std::string& kind);

// Four opaque quarters: red green / blue white.
void drawQuarters(cairo_t* cairo);
// A disc with a slanted bar through it, colours and transparency, many edge directions.
void drawDiscAndBar(cairo_t* cairo);
// The same shapes opaque and in greys, for a format that has no transparency and keeps colours at
// half the resolution.
void drawGreyDiscAndBar(cairo_t* cairo);

// The JPEG file with its orientation, 1 to 8, noted in an EXIF segment.
std::string withOrientation(const std::string& jpeg, int orientation);

// A valid black-and-white PNG of any size, highly compressed.
std::string hugePng(int width, int height);

std::string readFile(const std::string& path);

// Runs ImageMagick's program; false when it is missing or fails.
bool convert(const std::string& from, const std::string& to);

}  // namespace skavlo
