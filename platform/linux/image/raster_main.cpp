// skavlo-raster: turns one image file or one text into pixels, without privileges, and ends.
#include <errno.h>
#include <malloc.h>
#include <unistd.h>

#include <charconv>
#include <cstdio>
#include <optional>
#include <string>
#include <string_view>
#include <system_error>

#include "platform/linux/image/picture.h"
#include "platform/linux/image/raster_protocol.h"
#include "platform/linux/image/sandbox.h"

namespace {

using namespace skavlo;

enum ExitStatus { kAnswered = 0, kNoPicture = 1, kUsage = 2, kNoSandbox = 3 };

struct Request {
    bool text = false;
    int box = 0;
    double fontPixels = 0;
};

template <typename T>
bool parse(std::string_view argument, T highest, T& value) {
    const char* const end = argument.data() + argument.size();
    const auto result = std::from_chars(argument.data(), end, value);
    return result.ec == std::errc() && result.ptr == end && value > T{0} && value <= highest;
}

std::optional<Request> parseRequest(int count, char** arguments) {
    const std::string_view kind = count > 1 ? arguments[1] : "";
    Request request;
    request.text = kind == "text";
    if (!request.text && kind != "image") return std::nullopt;
    if (count != (request.text ? 4 : 3)) return std::nullopt;
    if (!parse(arguments[2], kMaximumBox, request.box)) return std::nullopt;
    if (request.text && !parse(arguments[3], kMaximumFontPixels, request.fontPixels))
        return std::nullopt;
    return request;
}

// None when there is more than may be.
std::optional<std::string> readText() {
    std::string text(kMaximumTextBytes + 1, '\0');
    std::size_t length = 0;
    while (length < text.size()) {
        const ssize_t count = read(STDIN_FILENO, text.data() + length, text.size() - length);
        if (count < 0 && errno == EINTR) continue;
        if (count < 0) return std::nullopt;
        if (count == 0) break;
        length += static_cast<std::size_t>(count);
    }
    if (length > kMaximumTextBytes) return std::nullopt;
    text.resize(length);
    return text;
}

std::optional<Picture> make(const Request& request) {
    if (!request.text) return decodeImage(STDIN_FILENO, request.box);
    const auto text = readText();
    return text ? drawText(*text, request.box, request.fontPixels) : std::nullopt;
}

bool writeAll(const void* data, std::size_t length) {
    auto at = static_cast<const char*>(data);
    while (length > 0) {
        const ssize_t count = write(STDOUT_FILENO, at, length);
        if (count < 0 && errno == EINTR) continue;
        if (count < 0) return false;
        at += count;
        length -= static_cast<std::size_t>(count);
    }
    return true;
}

bool answer(const Picture& picture) {
    const RasterHeader header{kRasterMagic, picture.width, picture.height};
    return writeAll(&header, sizeof header) &&
           writeAll(picture.pixels.data(), picture.pixels.size() * sizeof picture.pixels[0]);
}

}  // namespace

int main(int count, char** arguments) {
    const auto request = parseRequest(count, arguments);
    if (!request) return kUsage;
    // An arena per thread would take a good part of the address space.
    mallopt(M_ARENA_MAX, 1);
    if (const auto error = enterSandbox()) {
        std::fprintf(stderr, "skavlo-raster: %s\n", error->message.c_str());
        return kNoSandbox;
    }
    const auto picture = make(*request);
    // Without the libraries' own end, which has nothing to save and costs time.
    _exit(picture && answer(*picture) ? kAnswered : kNoPicture);
}
