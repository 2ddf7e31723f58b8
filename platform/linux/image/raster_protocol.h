// What skavlo-raster and those who start it say to each other, on one machine and from one build.
//
//     skavlo-raster image BOX               the image file's bytes on standard input
//     skavlo-raster text BOX FONTPIXELS     UTF-8 on standard input
//     skavlo-raster shrink LIMIT FACTOR...  the image file's bytes on standard input
//
// The answer on standard output is, to the first two, a RasterHeader and width * height
// premultiplied pixels, blue in the lowest byte, rows without gaps; to the third the PNG file of
// the image at the first factor of its size for which that file has at most LIMIT bytes, or at the
// last factor. Then comes the exit status 0. Any other status: no picture.
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
inline constexpr std::size_t kMaximumFactors = 16;  // each above 0 and at most 1

}  // namespace skavlo
