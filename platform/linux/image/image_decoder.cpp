#include <algorithm>
#include <cmath>

#include "platform/linux/image/image_file.h"
#include "platform/linux/image/picture.h"

namespace skavlo {

namespace {

// Bilinear in this library means, on reduction, the exact mean over the area of each pixel.
// Upright last, when there is least to turn; the box is square, so the order does not matter.
Pixbuf fitUpright(Pixbuf pixbuf, int box) {
    const int width = gdk_pixbuf_get_width(pixbuf.get());
    const int height = gdk_pixbuf_get_height(pixbuf.get());
    const PixbufSize size = fitInto(width, height, box);
    if (size.width != width || size.height != height) {
        Pixbuf scaled(
            gdk_pixbuf_scale_simple(pixbuf.get(), size.width, size.height, GDK_INTERP_BILINEAR));
        if (!scaled) return nullptr;
        gdk_pixbuf_copy_options(pixbuf.get(), scaled.get());
        pixbuf = std::move(scaled);
    }
    return Pixbuf(gdk_pixbuf_apply_embedded_orientation(pixbuf.get()));
}

std::uint32_t premultiplied(const guchar* pixel, std::uint32_t alpha) {
    const auto times = [alpha](guchar value) {
        return (static_cast<std::uint32_t>(value) * alpha + 127) / 255;
    };
    return alpha << 24 | times(pixel[0]) << 16 | times(pixel[1]) << 8 | times(pixel[2]);
}

Picture premultiply(const GdkPixbuf* pixbuf) {
    Picture picture{gdk_pixbuf_get_width(pixbuf), gdk_pixbuf_get_height(pixbuf), {}};
    const guchar* bytes = gdk_pixbuf_read_pixels(pixbuf);
    const auto stride = static_cast<std::size_t>(gdk_pixbuf_get_rowstride(pixbuf));
    const int channels = gdk_pixbuf_get_n_channels(pixbuf);
    picture.pixels.reserve(static_cast<std::size_t>(picture.width) *
                           static_cast<std::size_t>(picture.height));
    for (int y = 0; y < picture.height; ++y) {
        const guchar* pixel = bytes + static_cast<std::size_t>(y) * stride;
        for (int x = 0; x < picture.width; ++x, pixel += channels)
            picture.pixels.push_back(premultiplied(pixel, channels == 4 ? pixel[3] : 255U));
    }
    return picture;
}

}  // namespace

std::optional<Picture> decodeImage(int descriptor, int box) {
    Pixbuf pixbuf = loadImageFile(descriptor, box);
    if (pixbuf) pixbuf = fitUpright(std::move(pixbuf), box);
    if (!pixbuf) return std::nullopt;
    return premultiply(pixbuf.get());
}

}  // namespace skavlo
