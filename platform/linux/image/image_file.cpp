#include "platform/linux/image/image_file.h"

#include <errno.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <set>
#include <string_view>

#include "platform/linux/image/picture.h"

namespace skavlo {

PixbufSize fitInto(int width, int height, int box) {
    const double factor = static_cast<double>(box) / std::max(width, height);
    const auto side = [factor, box](int length) {
        return std::clamp(static_cast<int>(std::lround(length * factor)), 1, box);
    };
    return {side(width), side(height)};
}

namespace {

using Loader = std::unique_ptr<GdkPixbufLoader, Unref>;

// One loading, seen from the loader's signals.
struct Loading {
    std::optional<int> box;  // none: the image's own size
    bool refused = false;
    // Of these kinds a file that ends too early comes without error, its other rows undefined.
    bool rowByRow = false;
    std::set<int> rows;
};

// A loader that meets a size of zero gives up.
void refuse(GdkPixbufLoader* loader, Loading& loading) {
    loading.refused = true;
    gdk_pixbuf_loader_set_size(loader, 0, 0);
}

// This decoder reduces by 2, 4 or 8 at no cost. The more, the less exactly; what is left to average
// over afterwards makes up for it.
void reduceJpeg(GdkPixbufLoader* loader, int width, int height, int box) {
    for (const int divisor : {8, 4, 2}) {
        const PixbufSize least = fitInto(width, height, (divisor == 2 ? 2 : 4) * box);
        const PixbufSize reduced{(width + divisor - 1) / divisor, (height + divisor - 1) / divisor};
        if (reduced.width < least.width || reduced.height < least.height) continue;
        return gdk_pixbuf_loader_set_size(loader, reduced.width, reduced.height);
    }
}

// Called as soon as the size is known, before memory is taken for the pixels.
void sizePrepared(GdkPixbufLoader* loader, int width, int height, gpointer data) {
    auto& loading = *static_cast<Loading*>(data);
    if (width < 1 || height < 1) return refuse(loader, loading);
    GdkPixbufFormat* format = gdk_pixbuf_loader_get_format(loader);
    if (format == nullptr) return refuse(loader, loading);
    if (loading.box && gdk_pixbuf_format_is_scalable(format)) {
        const PixbufSize size = fitInto(width, height, *loading.box);
        return gdk_pixbuf_loader_set_size(loader, size.width, size.height);
    }
    if (std::int64_t{width} * height > kMaximumImagePixels) return refuse(loader, loading);
    const std::unique_ptr<gchar, void (*)(gpointer)> name(gdk_pixbuf_format_get_name(format),
                                                          g_free);
    const std::string_view kind(name.get());
    loading.rowByRow = kind == "png" || kind == "bmp";
    if (loading.box && kind == "jpeg") reduceJpeg(loader, width, height, *loading.box);
}

void areaUpdated(GdkPixbufLoader*, int, int y, int, int height, gpointer data) {
    auto& loading = *static_cast<Loading*>(data);
    if (!loading.rowByRow) return;
    for (int row = y; row < y + height; ++row) loading.rows.insert(row);
}

// What a file in RIFF (such as WebP) says of its own length, 0 for others. The decoder of these
// does not mind when the rest is missing.
std::int64_t announcedBytes(std::string_view start) {
    if (start.size() < 8 || start.substr(0, 4) != "RIFF") return 0;
    std::int64_t length = 8;
    for (std::size_t byte = 0; byte < 4; ++byte)
        length += std::int64_t{static_cast<unsigned char>(start[4 + byte])} << (8 * byte);
    return length;
}

bool feed(GdkPixbufLoader* loader, int descriptor, const Loading& loading) {
    std::array<guchar, 65536> bytes;
    std::int64_t announced = 0;
    for (std::int64_t total = 0;;) {
        const ssize_t count = read(descriptor, bytes.data(), bytes.size());
        if (count < 0 && errno == EINTR) continue;
        if (count < 0) return false;
        if (count == 0) return total >= announced;
        const auto length = static_cast<std::size_t>(count);
        if (total == 0)
            announced = announcedBytes({reinterpret_cast<const char*>(bytes.data()), length});
        total += count;
        if (!gdk_pixbuf_loader_write(loader, bytes.data(), length, nullptr) || loading.refused)
            return false;
    }
}

}  // namespace

Pixbuf loadImageFile(int descriptor, std::optional<int> box) {
    const Loader loader(gdk_pixbuf_loader_new());
    Loading loading{.box = box, .rows = {}};
    g_signal_connect(loader.get(), "size-prepared", G_CALLBACK(sizePrepared), &loading);
    g_signal_connect(loader.get(), "area-updated", G_CALLBACK(areaUpdated), &loading);
    const bool fed = feed(loader.get(), descriptor, loading);
    const bool closed = gdk_pixbuf_loader_close(loader.get(), nullptr);
    GdkPixbuf* pixbuf = gdk_pixbuf_loader_get_pixbuf(loader.get());
    if (!fed || !closed || loading.refused || pixbuf == nullptr) return nullptr;
    const auto height = static_cast<std::size_t>(gdk_pixbuf_get_height(pixbuf));
    if (loading.rowByRow && loading.rows.size() < height) return nullptr;
    return Pixbuf(GDK_PIXBUF(g_object_ref(pixbuf)));
}

}  // namespace skavlo
