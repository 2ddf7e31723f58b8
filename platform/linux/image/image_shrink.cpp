#include <algorithm>
#include <cmath>
#include <limits>

#include "platform/linux/image/image_file.h"
#include "platform/linux/image/picture.h"

namespace skavlo {

namespace {

int side(int length, double factor) {
    return std::max(1, static_cast<int>(std::ceil(length * factor)));
}

// Bilinear in this library means, on reduction, the exact mean over the area of each pixel, colours
// weighted by their alpha.
Pixbuf scaled(const Pixbuf& image, double factor) {
    return Pixbuf(gdk_pixbuf_scale_simple(
        image.get(), side(gdk_pixbuf_get_width(image.get()), factor),
        side(gdk_pixbuf_get_height(image.get()), factor), GDK_INTERP_BILINEAR));
}

struct Output {
    std::uint64_t limitBytes;
    std::string bytes;
};

// Ends the encoding as soon as the file is too long.
gboolean append(const gchar* data, gsize length, GError** error, gpointer user) {
    auto& output = *static_cast<Output*>(user);
    if (length > output.limitBytes - output.bytes.size()) {
        g_set_error_literal(error, GDK_PIXBUF_ERROR, GDK_PIXBUF_ERROR_FAILED, "too long");
        return FALSE;
    }
    output.bytes.append(data, length);
    return TRUE;
}

std::optional<std::string> encodePng(const Pixbuf& image, std::uint64_t limitBytes) {
    Output output{limitBytes, {}};
    GError* error = nullptr;
    const gboolean whole =
        gdk_pixbuf_save_to_callbackv(image.get(), append, &output, "png", nullptr, nullptr, &error);
    g_clear_error(&error);
    if (!whole) return std::nullopt;
    return std::move(output.bytes);
}

}  // namespace

std::optional<std::string> shrinkImage(int descriptor, const std::vector<double>& factors,
                                       std::uint64_t limitBytes) {
    Pixbuf image = loadImageFile(descriptor, std::nullopt);
    if (image) image.reset(gdk_pixbuf_apply_embedded_orientation(image.get()));
    for (std::size_t pass = 0; image && pass < factors.size(); ++pass) {
        const bool last = pass + 1 == factors.size();
        const Pixbuf smaller = scaled(image, factors[pass]);
        if (!smaller) return std::nullopt;
        auto png =
            encodePng(smaller, last ? std::numeric_limits<std::uint64_t>::max() : limitBytes);
        if (png) return png;
    }
    return std::nullopt;
}

}  // namespace skavlo
