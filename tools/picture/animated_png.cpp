#include "tools/picture/animated_png.h"

#include <zlib.h>

#include <algorithm>
#include <cstdint>
#include <string_view>

#include "tools/picture/output_file.h"

namespace skavlo {

namespace {

constexpr std::size_t kSignatureBytes = 8;
constexpr std::uint32_t kLongestTicks = 0xFFFF;

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

void AnimatedPng::add(const Bitmap& frame, std::uint16_t ticks) {
    PixelRect changed{0, 0, frame.size.width, frame.size.height};
    if (!frames_.empty()) {
        changed = difference(last_, frame);
        if (changed.empty() && frames_.back().ticks + std::uint32_t{ticks} <= kLongestTicks) {
            frames_.back().ticks = static_cast<std::uint16_t>(frames_.back().ticks + ticks);
            return;
        }
        // A frame that nothing can prolong any more is followed by its like.
        if (changed.empty()) changed = {0, 0, 1, 1};
    }
    Frame& added = frames_.emplace_back(Frame{changed, ticks, cut(frame, changed), {}});
    if (traits_.compressAtOnce) {
        added.compressed = compress(added.part);
        added.part = {};
    }
    last_ = frame;
}

std::string AnimatedPng::compress(const Bitmap& part) const {
    return pictureData(encodePng(part, traits_.transparency));
}

std::string AnimatedPng::frameControl(const Frame& frame, std::uint32_t sequence) const {
    constexpr int kReplaceAndKeep = 0;  // both what it does to the frame before and what stays
    return chunk("fcTL", bigEndian(sequence) +
                             bigEndian(static_cast<std::uint32_t>(frame.place.width)) +
                             bigEndian(static_cast<std::uint32_t>(frame.place.height)) +
                             bigEndian(static_cast<std::uint32_t>(frame.place.x)) +
                             bigEndian(static_cast<std::uint32_t>(frame.place.y)) +
                             bigEndian(frame.ticks, 2) + bigEndian(traits_.ticksPerSecond, 2) +
                             bigEndian(kReplaceAndKeep, 2));
}

std::string AnimatedPng::encode() const {
    constexpr std::uint8_t kTrueColour = 2;
    constexpr std::uint8_t kTrueColourWithAlpha = 6;
    const bool opaque = traits_.transparency == Transparency::none;
    std::string file = "\x89PNG\r\n\x1a\n";
    file += chunk("IHDR", bigEndian(static_cast<std::uint32_t>(last_.size.width)) +
                              bigEndian(static_cast<std::uint32_t>(last_.size.height)) +
                              bigEndian(8, 1) +  // bits
                              bigEndian(opaque ? kTrueColour : kTrueColourWithAlpha, 1) +
                              std::string(3, '\0'));
    file += chunk("acTL", bigEndian(static_cast<std::uint32_t>(frames_.size())) +
                              bigEndian(0));  // 0: as often as one looks
    std::uint32_t sequence = 0;
    for (const Frame& frame : frames_) {
        const std::string data = frame.compressed.empty() ? compress(frame.part) : frame.compressed;
        if (data.empty()) return {};
        const bool first = sequence == 0;
        file += frameControl(frame, sequence++);
        file += first ? chunk("IDAT", data) : chunk("fdAT", bigEndian(sequence++) + data);
    }
    return file + chunk("IEND", "");
}

std::optional<Error> AnimatedPng::write(const std::string& path) const {
    const std::string bytes = frames_.empty() ? std::string() : encode();
    return bytes.empty() ? Error{"cannot make an animated PNG for " + path}
                         : writeFile(path, bytes);
}

}  // namespace skavlo
