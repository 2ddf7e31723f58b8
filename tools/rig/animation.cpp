#include "tools/rig/animation.h"

#include <zlib.h>

#include <algorithm>
#include <cstdint>
#include <string_view>

#include "tools/rig/png.h"

namespace skavlo::rig {

namespace {

constexpr std::size_t kSignatureBytes = 8;
constexpr std::size_t kHeaderChunkEnd = 33;  // the signature and the header chunk

std::string bigEndian(std::uint32_t value, int bytes = 4) {
    std::string text;
    for (int i = bytes - 1; i >= 0; --i) {
        text += static_cast<char>(value >> (8 * i));
    }
    return text;
}

std::uint32_t readBigEndian(std::string_view text) {
    std::uint32_t value = 0;
    for (const char byte : text.substr(0, 4)) {
        value = value << 8 | static_cast<unsigned char>(byte);
    }
    return value;
}

// A chunk is its length, its type, its contents and a check sum of type and contents.
std::string chunk(const std::string& type, const std::string& contents) {
    const std::string checked = type + contents;
    const auto sum =
        crc32(0, reinterpret_cast<const Bytef*>(checked.data()), static_cast<uInt>(checked.size()));
    return bigEndian(static_cast<std::uint32_t>(contents.size())) + checked +
           bigEndian(static_cast<std::uint32_t>(sum));
}

// The compressed picture within a PNG: the contents of its IDAT chunks, joined.
std::string pictureData(std::string_view png) {
    std::string data;
    std::size_t place = kSignatureBytes;
    while (place + 12 <= png.size()) {
        const std::size_t length = readBigEndian(png.substr(place));
        if (png.substr(place + 4, 4) == "IDAT") {
            data += png.substr(place + 8, length);
        }
        place += length + 12;
    }
    return data;
}

Bitmap cut(const Bitmap& bitmap, PixelRect rect) {
    Bitmap part{{rect.width, rect.height}, {}};
    part.pixels.reserve(static_cast<std::size_t>(rect.width) * rect.height);
    for (int y = rect.y; y < rect.bottom(); ++y) {
        const auto row = bitmap.pixels.begin() + static_cast<std::ptrdiff_t>(y) * bitmap.size.width;
        part.pixels.insert(part.pixels.end(), row + rect.x, row + rect.right());
    }
    return part;
}

bool rowsDiffer(const Bitmap& left, const Bitmap& right, int y) {
    const auto start = static_cast<std::ptrdiff_t>(y) * left.size.width;
    return !std::equal(left.pixels.begin() + start, left.pixels.begin() + start + left.size.width,
                       right.pixels.begin() + start);
}

}  // namespace

PixelRect difference(const Bitmap& left, const Bitmap& right) {
    int top = 0;
    int bottom = left.size.height;
    while (top < bottom && !rowsDiffer(left, right, top)) {
        ++top;
    }
    while (bottom > top && !rowsDiffer(left, right, bottom - 1)) {
        --bottom;
    }
    int first = left.size.width;
    int end = 0;
    for (int y = top; y < bottom; ++y) {
        const auto start = static_cast<std::ptrdiff_t>(y) * left.size.width;
        for (int x = 0; x < left.size.width; ++x) {
            if (left.pixels[start + x] != right.pixels[start + x]) {
                first = std::min(first, x);
                end = std::max(end, x + 1);
            }
        }
    }
    return top == bottom ? PixelRect{} : PixelRect{first, top, end - first, bottom - top};
}

void Animation::add(const Bitmap& frame, std::chrono::milliseconds shownFor) {
    PixelRect changed{0, 0, frame.size.width, frame.size.height};
    if (!frames_.empty()) {
        changed = difference(last_, frame);
        if (changed.empty()) {
            frames_.back().shownFor += shownFor;
            return;
        }
    }
    frames_.push_back({{changed.x, changed.y}, cut(frame, changed), shownFor});
    last_ = frame;
}

std::string Animation::encode() const {
    std::string file;
    std::uint32_t sequence = 0;
    for (const Frame& frame : frames_) {
        const std::string png = encodePng(frame.part);
        if (png.empty()) {
            return {};
        }
        const bool first = file.empty();
        if (first) {
            file = png.substr(0, kHeaderChunkEnd) +
                   chunk("acTL", bigEndian(static_cast<std::uint32_t>(frames_.size())) +
                                     bigEndian(0));  // 0: as often as one looks
        }
        const auto milliseconds = std::min<std::int64_t>(frame.shownFor.count(), 0xFFFF);
        file += chunk("fcTL", bigEndian(sequence++) +
                                  bigEndian(static_cast<std::uint32_t>(frame.part.size.width)) +
                                  bigEndian(static_cast<std::uint32_t>(frame.part.size.height)) +
                                  bigEndian(static_cast<std::uint32_t>(frame.origin.x)) +
                                  bigEndian(static_cast<std::uint32_t>(frame.origin.y)) +
                                  bigEndian(static_cast<std::uint32_t>(milliseconds), 2) +
                                  bigEndian(1000, 2) + std::string(2, '\0'));
        file += first ? chunk("IDAT", pictureData(png))
                      : chunk("fdAT", bigEndian(sequence++) + pictureData(png));
    }
    return file + chunk("IEND", "");
}

std::optional<Error> Animation::write(const std::string& path) const {
    const std::string bytes = frames_.empty() ? std::string() : encode();
    return bytes.empty() ? Error{"cannot make an animated PNG for " + path}
                         : writeFile(path, bytes);
}

}  // namespace skavlo::rig
