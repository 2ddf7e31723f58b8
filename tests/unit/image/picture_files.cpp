#include "tests/unit/image/picture_files.h"

#include <gdk-pixbuf/gdk-pixbuf.h>
#include <zlib.h>

#include <array>
#include <cmath>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <memory>

namespace skavlo {

namespace {

constexpr int kSamples = 16;

std::vector<std::uint32_t> render(const Drawing& drawing, int width, int height) {
    std::vector<std::uint32_t> pixels(static_cast<std::size_t>(width) *
                                      static_cast<std::size_t>(height));
    cairo_surface_t* surface =
        cairo_image_surface_create_for_data(reinterpret_cast<unsigned char*>(pixels.data()),
                                            CAIRO_FORMAT_ARGB32, width, height, width * 4);
    cairo_t* cairo = cairo_create(surface);
    cairo_scale(cairo, width, height);
    drawing(cairo);
    cairo_destroy(cairo);
    cairo_surface_flush(surface);
    cairo_surface_destroy(surface);
    return pixels;
}

// Straight alpha, as files hold it.
std::vector<unsigned char> straighten(const std::vector<std::uint32_t>& pixels) {
    std::vector<unsigned char> bytes;
    for (const std::uint32_t pixel : pixels) {
        const std::uint32_t alpha = pixel >> 24;
        for (const int shift : {16, 8, 0}) {
            const std::uint32_t value = pixel >> shift & 0xff;
            bytes.push_back(
                static_cast<unsigned char>(alpha == 0 ? 0 : (value * 255 + alpha / 2) / alpha));
        }
        bytes.push_back(static_cast<unsigned char>(alpha));
    }
    return bytes;
}

std::string bigEndian(std::uint32_t value) {
    std::string bytes;
    for (const int shift : {24, 16, 8, 0}) bytes += static_cast<char>(value >> shift & 0xff);
    return bytes;
}

std::string pngChunk(const std::string& kind, const std::string& data) {
    const std::string body = kind + data;
    const auto sum =
        crc32(0, reinterpret_cast<const Bytef*>(body.data()), static_cast<uInt>(body.size()));
    return bigEndian(static_cast<std::uint32_t>(data.size())) + body +
           bigEndian(static_cast<std::uint32_t>(sum));
}

// `rows` rows of `length` zero bytes each, compressed without ever being held.
std::string deflatedRows(int rows, std::size_t length) {
    std::string row(length, '\0');
    std::array<char, 65536> out;
    std::string result;
    z_stream stream{};
    deflateInit(&stream, Z_BEST_SPEED);
    for (int y = 0; y <= rows; ++y) {
        stream.next_in = reinterpret_cast<Bytef*>(row.data());
        stream.avail_in = y < rows ? static_cast<uInt>(length) : 0;
        do {
            stream.next_out = reinterpret_cast<Bytef*>(out.data());
            stream.avail_out = out.size();
            deflate(&stream, y < rows ? Z_NO_FLUSH : Z_FINISH);
            result.append(out.data(), out.size() - stream.avail_out);
        } while (stream.avail_out == 0);
    }
    deflateEnd(&stream);
    return result;
}

void disc(cairo_t* cairo) {
    cairo_arc(cairo, 0.5, 0.5, 0.45, 0, 2 * M_PI);
}

void bar(cairo_t* cairo) {
    cairo_move_to(cairo, 0.1, 0.2);
    cairo_line_to(cairo, 0.95, 0.77);
    cairo_set_line_width(cairo, 0.08);
}

void rectangle(cairo_t* cairo, double x, double y, double size, double r, double g, double b) {
    cairo_set_source_rgb(cairo, r, g, b);
    cairo_rectangle(cairo, x, y, size, size);
    cairo_fill(cairo);
}

}  // namespace

Bitmap drawReference(const Drawing& drawing, int width, int height) {
    const auto samples = render(drawing, width * kSamples, height * kSamples);
    Bitmap bitmap{{width, height}, {}};
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x) {
            std::array<unsigned, 4> sums{};
            for (int s = 0; s < kSamples * kSamples; ++s) {
                const int row = y * kSamples + s / kSamples;
                const std::uint32_t sample = samples[static_cast<std::size_t>(
                    row * width * kSamples + x * kSamples + s % kSamples)];
                for (unsigned c = 0; c < 4; ++c) sums[c] += sample >> (8 * c) & 0xff;
            }
            std::uint32_t pixel = 0;
            for (unsigned c = 0; c < 4; ++c)
                pixel |= (sums[c] + kSamples * kSamples / 2) / (kSamples * kSamples) << (8 * c);
            bitmap.pixels.push_back(pixel);
        }
    return bitmap;
}

bool saveDrawing(const Drawing& drawing, int width, int height, const std::string& path,
                 const std::string& kind) {
    auto bytes = straighten(render(drawing, width, height));
    GdkPixbuf* pixbuf = gdk_pixbuf_new_from_data(bytes.data(), GDK_COLORSPACE_RGB, TRUE, 8, width,
                                                 height, width * 4, nullptr, nullptr);
    const bool jpeg = kind == "jpeg";
    const gboolean saved = gdk_pixbuf_save(pixbuf, path.c_str(), kind.c_str(), nullptr,
                                           jpeg ? "quality" : nullptr, "100", nullptr);
    g_object_unref(pixbuf);
    return saved;
}

void drawQuarters(cairo_t* cairo) {
    rectangle(cairo, 0, 0, 0.5, 1, 0, 0);
    rectangle(cairo, 0.5, 0, 0.5, 0, 1, 0);
    rectangle(cairo, 0, 0.5, 0.5, 0, 0, 1);
    rectangle(cairo, 0.5, 0.5, 0.5, 1, 1, 1);
}

void drawDiscAndBar(cairo_t* cairo) {
    disc(cairo);
    cairo_set_source_rgb(cairo, 0.9, 0.2, 0.1);
    cairo_fill(cairo);
    bar(cairo);
    cairo_set_source_rgba(cairo, 0.1, 0.4, 0.9, 0.6);
    cairo_stroke(cairo);
}

void drawGreyDiscAndBar(cairo_t* cairo) {
    cairo_set_source_rgb(cairo, 1, 1, 1);
    cairo_paint(cairo);
    disc(cairo);
    cairo_set_source_rgb(cairo, 0.3, 0.3, 0.3);
    cairo_fill(cairo);
    bar(cairo);
    cairo_set_source_rgb(cairo, 0.8, 0.8, 0.8);
    cairo_stroke(cairo);
}

std::string withOrientation(const std::string& jpeg, int orientation) {
    using namespace std::string_literals;
    // One directory of one entry, little-endian: tag 0x0112, short, one value.
    const std::string exif = "Exif\0\0"s + "II*\0\x08\0\0\0"s + "\x01\0"s +
                             "\x12\x01\x03\0\x01\0\0\0"s + static_cast<char>(orientation) +
                             "\0\0\0"s + "\0\0\0\0"s;
    const std::string length{'\0', static_cast<char>(exif.size() + 2)};
    return jpeg.substr(0, 2) + "\xff\xe1" + length + exif + jpeg.substr(2);
}

std::string hugePng(int width, int height) {
    const std::string kind{'\x01', '\0', '\0', '\0', '\0'};  // one bit, grey
    const auto rowBytes = static_cast<std::size_t>((width + 7) / 8) + 1;
    return "\x89PNG\r\n\x1a\n" +
           pngChunk("IHDR", bigEndian(static_cast<std::uint32_t>(width)) +
                                bigEndian(static_cast<std::uint32_t>(height)) + kind) +
           pngChunk("IDAT", deflatedRows(height, rowBytes)) + pngChunk("IEND", "");
}

std::string readFile(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

bool convert(const std::string& from, const std::string& to) {
    const std::string command = "/usr/bin/convert '" + from + "' '" + to + "' >/dev/null 2>&1";
    return std::system(command.c_str()) == 0;
}

}  // namespace skavlo
