#include "tools/rig/png.h"

#include <png.h>

#include <cerrno>
#include <cstring>
#include <fstream>

namespace skavlo::rig {

std::string encodePng(const Bitmap& bitmap) {
    std::string colours;
    colours.reserve(bitmap.pixels.size() * 3);
    for (const std::uint32_t pixel : bitmap.pixels) {
        colours += static_cast<char>(pixel >> 16);
        colours += static_cast<char>(pixel >> 8);
        colours += static_cast<char>(pixel);
    }
    png_image image = {};
    image.version = PNG_IMAGE_VERSION;
    image.width = static_cast<png_uint_32>(bitmap.size.width);
    image.height = static_cast<png_uint_32>(bitmap.size.height);
    image.format = PNG_FORMAT_RGB;
    png_alloc_size_t length = PNG_IMAGE_PNG_SIZE_MAX(image);
    std::string file(length, '\0');
    const int written =
        png_image_write_to_memory(&image, file.data(), &length, 0, colours.data(), 0, nullptr);
    file.resize(written != 0 ? length : 0);
    return file;
}

std::optional<Error> writeFile(const std::string& path, const std::string& bytes) {
    std::ofstream file(path, std::ios::binary | std::ios::trunc);
    file.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    file.close();
    if (!file) {
        return Error{"cannot write " + path + ": " + std::strerror(errno)};
    }
    return std::nullopt;
}

std::optional<Error> writePng(const std::string& path, const Bitmap& bitmap) {
    const std::string bytes = encodePng(bitmap);
    return bytes.empty() ? Error{"cannot make a PNG for " + path} : writeFile(path, bytes);
}

}  // namespace skavlo::rig
