// What the overlay and skavlo-raster say to each other, on one machine and from one build.
//
//     skavlo-raster image BOX             the image file's bytes on standard input
//     skavlo-raster text BOX FONTPIXELS   UTF-8 on standard input
//
// The answer on standard output is a RasterHeader and width * height premultiplied pixels, blue in
// the lowest byte, rows without gaps; then the exit status 0. Any other status: no picture.
#pragma once

#include <cstddef>
#include <cstdint>

namespace skavlo {

struct RasterHeader {
    std::uint32_t magic;
    std::int32_t width;
    std::int32_t height;
};

inline constexpr std::uint32_t kRasterMagic = 0x52564b53;  // "SKVR"
inline constexpr int kMaximumBox = 4096;                   // pixels
inline constexpr double kMaximumFontPixels = 4096;
// Also what a pipe takes in one piece (PIPE_BUF).
inline constexpr std::size_t kMaximumTextBytes = 4096;

}  // namespace skavlo
