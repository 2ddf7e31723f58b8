#include <errno.h>
#include <gdk-pixbuf/gdk-pixbuf.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <memory>
#include <string_view>

#include "platform/linux/image/picture.h"

namespace skavlo {

namespace {

struct Unref {
    void operator()(gpointer object) const { g_object_unref(object); }
};
using Loader = std::unique_ptr<GdkPixbufLoader, Unref>;
using Pixbuf = std::unique_ptr<GdkPixbuf, Unref>;

struct Fitted {
    int width;
    int height;
};

Fitted fit(int width, int height, int box) {
    const double factor = static_cast<double>(box) / std::max(width, height);
    const auto side = [factor, box](int length) {
        return std::clamp(static_cast<int>(std::lround(length * factor)), 1, box);
    };
    return {side(width), side(height)};
}

struct SizeRequest {
    int box;
    bool refused = false;
};

// A loader that meets a size of zero gives up.
void refuse(GdkPixbufLoader* loader, SizeRequest& request) {
    request.refused = true;
    gdk_pixbuf_loader_set_size(loader, 0, 0);
}

// Called as soon as the size is known, before memory is taken for the pixels.
void sizePrepared(GdkPixbufLoader* loader, int width, int height, gpointer data) {
    auto& request = *static_cast<SizeRequest*>(data);
    if (width < 1 || height < 1) return refuse(loader, request);
    GdkPixbufFormat* format = gdk_pixbuf_loader_get_format(loader);
    const bool scalable = format != nullptr && gdk_pixbuf_format_is_scalable(format);
    if (scalable) {
        const Fitted size = fit(width, height, request.box);
        return gdk_pixbuf_loader_set_size(loader, size.width, size.height);
    }
    if (std::int64_t{width} * height > kMaximumImagePixels) return refuse(loader, request);
    if (format == nullptr) return;
    const std::unique_ptr<gchar, void (*)(gpointer)> name(gdk_pixbuf_format_get_name(format),
                                                          g_free);
    // This loader decodes at a half, a quarter or an eighth of the size; what is left to do is
    // then an exact reduction by two.
    const Fitted twice = fit(width, height, 2 * request.box);
    if (std::string_view(name.get()) == "jpeg" && twice.width < width && twice.height < height)
        gdk_pixbuf_loader_set_size(loader, twice.width, twice.height);
}

bool feed(GdkPixbufLoader* loader, int descriptor, const SizeRequest& request) {
    std::array<guchar, 65536> bytes;
    for (;;) {
        const ssize_t count = read(descriptor, bytes.data(), bytes.size());
        if (count < 0 && errno == EINTR) continue;
        if (count < 0) return false;
        if (count == 0) return true;
        if (!gdk_pixbuf_loader_write(loader, bytes.data(), static_cast<gsize>(count), nullptr) ||
            request.refused)
            return false;
    }
}

Pixbuf load(int descriptor, int box) {
    const Loader loader(gdk_pixbuf_loader_new());
    SizeRequest request{box};
    g_signal_connect(loader.get(), "size-prepared", G_CALLBACK(sizePrepared), &request);
    const bool fed = feed(loader.get(), descriptor, request);
    const bool closed = gdk_pixbuf_loader_close(loader.get(), nullptr);
    if (!fed || !closed || request.refused) return nullptr;
    GdkPixbuf* pixbuf = gdk_pixbuf_loader_get_pixbuf(loader.get());
    return Pixbuf(pixbuf == nullptr ? nullptr : GDK_PIXBUF(g_object_ref(pixbuf)));
}

// Bilinear in this library means, on reduction, the exact mean over the area of each pixel.
// Upright last, when there is least to turn; the box is square, so the order does not matter.
Pixbuf fitUpright(Pixbuf pixbuf, int box) {
    const int width = gdk_pixbuf_get_width(pixbuf.get());
    const int height = gdk_pixbuf_get_height(pixbuf.get());
    const Fitted size = fit(width, height, box);
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
    Pixbuf pixbuf = load(descriptor, box);
    if (pixbuf) pixbuf = fitUpright(std::move(pixbuf), box);
    if (!pixbuf) return std::nullopt;
    return premultiply(pixbuf.get());
}

}  // namespace skavlo
