#include "tools/picture/png.h"

#include <png.h>

#include <algorithm>

#include "tools/picture/output_file.h"

namespace skavlo {

namespace {

constexpr std::uint32_t kOpaque = 255;

// A premultiplied colour above its alpha, which no drawing makes, counts as the alpha.
char straight(std::uint32_t colour, std::uint32_t alpha) {
    return static_cast<char>((std::min(colour, alpha) * kOpaque + alpha / 2) / alpha);
}

std::string opaqueColours(const Bitmap& bitmap) {
    std::string colours;
    colours.reserve(bitmap.pixels.size() * 3);
    for (const std::uint32_t pixel : bitmap.pixels) {
        colours += static_cast<char>(pixel >> 16);
        colours += static_cast<char>(pixel >> 8);
        colours += static_cast<char>(pixel);
    }
    return colours;
}

}  // namespace

std::string straightColours(const Bitmap& bitmap) {
    std::string colours;
    colours.reserve(bitmap.pixels.size() * 4);
    for (const std::uint32_t pixel : bitmap.pixels) {
        const std::uint32_t alpha = pixel >> 24;
        for (const int shift : {16, 8, 0}) {
            colours += alpha == 0 ? '\0' : straight(pixel >> shift & 0xFF, alpha);
        }
        colours += static_cast<char>(alpha);
    }
    return colours;
}

std::string encodePng(const Bitmap& bitmap, Transparency transparency) {
    const bool opaque = transparency == Transparency::none;
    const std::string colours = opaque ? opaqueColours(bitmap) : straightColours(bitmap);
    png_image image = {};
    image.version = PNG_IMAGE_VERSION;
    image.width = static_cast<png_uint_32>(bitmap.size.width);
    image.height = static_cast<png_uint_32>(bitmap.size.height);
    image.format = opaque ? PNG_FORMAT_RGB : PNG_FORMAT_RGBA;
    png_alloc_size_t length = PNG_IMAGE_PNG_SIZE_MAX(image);
    std::string file(length, '\0');
    const int written =
        png_image_write_to_memory(&image, file.data(), &length, 0, colours.data(), 0, nullptr);
    file.resize(written != 0 ? length : 0);
    return file;
}

std::optional<Error> writePng(const std::string& path, const Bitmap& bitmap,
                              Transparency transparency) {
    const std::string bytes = encodePng(bitmap, transparency);
    return bytes.empty() ? Error{"cannot make a PNG for " + path} : writeFile(path, bytes);
}

}  // namespace skavlo
