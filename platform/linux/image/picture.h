#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace skavlo {

// Premultiplied pixels, blue in the lowest byte, rows without gaps.
struct Picture {
    int width = 0;
    int height = 0;
    std::vector<std::uint32_t> pixels;
};

// The first image of the file open as `descriptor`, upright, as large as fits into a square of
// `box` pixels at its own aspect; each side is at least one pixel. None when it is no image of a
// known kind, is damaged or cut off, or has more than kMaximumImagePixels. Of a JPEG or interlaced
// PNG file that is cut off there is what was decoded, the rest grey or blurred, as everywhere.
[[nodiscard]] std::optional<Picture> decodeImage(int descriptor, int box);

inline constexpr std::int64_t kMaximumImagePixels = 100'000'000;

// The PNG file of the same image, upright, at the first of the factors of its size (pixels rounded
// up) for which that file has at most `limitBytes`, else at the last one. None as above.
[[nodiscard]] std::optional<std::string> shrinkImage(int descriptor,
                                                     const std::vector<double>& factors,
                                                     std::uint64_t limitBytes);

// One line in the system font, its logical rectangle centred in a square of `box` pixels,
// ellipsised at the end when wider; line breaks and other control characters count as spaces. None
// when `text` is not UTF-8; an empty text is a transparent picture.
[[nodiscard]] std::optional<Picture> drawText(const std::string& text, int box, double fontPixels);

}  // namespace skavlo
