#pragma once

#include <gdk-pixbuf/gdk-pixbuf.h>

#include <memory>
#include <optional>

namespace skavlo {

struct Unref {
    void operator()(gpointer object) const { g_object_unref(object); }
};
using Pixbuf = std::unique_ptr<GdkPixbuf, Unref>;

struct PixbufSize {
    int width;
    int height;
};

// The largest size of this aspect in a square of `box` pixels, each side at least one.
[[nodiscard]] PixbufSize fitInto(int width, int height, int box);

// The first image of the open file, as it lies in it, not turned upright; null when there is none
// or it has more than kMaximumImagePixels. With a box, which the image is to be fitted into
// afterwards, decoding may leave out what no one would see.
[[nodiscard]] Pixbuf loadImageFile(int descriptor, std::optional<int> box);

}  // namespace skavlo
