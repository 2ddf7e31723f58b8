// skavlo-raster: turns one image file or one text into pixels, or one image file into a smaller
// one, without privileges, and ends.
#include <errno.h>
#include <malloc.h>
#include <unistd.h>

#include <algorithm>
#include <charconv>
#include <cstdio>
#include <limits>
#include <optional>
#include <string>
#include <string_view>
#include <system_error>
#include <vector>

#include "platform/linux/image/picture.h"
#include "platform/linux/image/raster_protocol.h"
#include "platform/linux/image/sandbox.h"

namespace {

using namespace skavlo;

enum ExitStatus { kAnswered = 0, kNoPicture = 1, kUsage = 2, kNoSandbox = 3 };

// 50 megapixels of a photo are 200 megabytes, which turning upright needs twice; the scaled copy,
// what the decoder takes for itself and the libraries come on top, and of the largest image twice
// as much. The time is for nine passes on a slow machine.
constexpr SandboxLimits kShrinkLimits{.addressSpaceBytes = rlim_t{5} << 29, .processorSeconds = 90};

enum class Kind { image, text, shrink };

struct Request {
    Kind kind = Kind::image;
    int box = 0;
    double fontPixels = 0;
    std::uint64_t limitBytes = 0;
    std::vector<double> factors;
};

template <typename T>
bool parse(std::string_view argument, T highest, T& value) {
    const char* const end = argument.data() + argument.size();
    const auto result = std::from_chars(argument.data(), end, value);
    return result.ec == std::errc() && result.ptr == end && value > T{0} && value <= highest;
}

std::optional<Request> parseShrink(const std::vector<std::string_view>& arguments) {
    Request request{.kind = Kind::shrink, .factors = {}};
    if (arguments.size() < 3 || arguments.size() > kMaximumFactors + 2) return std::nullopt;
    if (!parse(arguments[1], std::numeric_limits<std::uint64_t>::max(), request.limitBytes))
        return std::nullopt;
    for (std::size_t i = 2; i < arguments.size(); ++i)
        if (!parse(arguments[i], 1.0, request.factors.emplace_back())) return std::nullopt;
    return request;
}

std::optional<Request> parseRequest(const std::vector<std::string_view>& arguments) {
    if (arguments.empty()) return std::nullopt;
    if (arguments[0] == "shrink") return parseShrink(arguments);
    Request request;
    const bool text = arguments[0] == "text";
    if (!text && arguments[0] != "image") return std::nullopt;
    if (arguments.size() != (text ? 3U : 2U)) return std::nullopt;
    if (text) request.kind = Kind::text;
    if (!parse(arguments[1], kMaximumBox, request.box)) return std::nullopt;
    if (text && !parse(arguments[2], kMaximumFontPixels, request.fontPixels)) return std::nullopt;
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

bool answerPicture(const std::optional<Picture>& picture) {
    if (!picture) return false;
    const RasterHeader header{kRasterMagic, picture->width, picture->height};
    return writeAll(&header, sizeof header) &&
           writeAll(picture->pixels.data(), picture->pixels.size() * sizeof picture->pixels[0]);
}

bool answer(const Request& request) {
    if (request.kind == Kind::image) return answerPicture(decodeImage(STDIN_FILENO, request.box));
    if (request.kind == Kind::text) {
        const auto text = readText();
        return text && answerPicture(drawText(*text, request.box, request.fontPixels));
    }
    const auto png = shrinkImage(STDIN_FILENO, request.factors, request.limitBytes);
    return png && writeAll(png->data(), png->size());
}

}  // namespace

int main(int count, char** arguments) {
    const auto request = parseRequest({arguments + std::min(count, 1), arguments + count});
    if (!request) return kUsage;
    // An arena per thread would take a good part of the address space.
    mallopt(M_ARENA_MAX, 1);
    const auto limits = request->kind == Kind::shrink ? kShrinkLimits : SandboxLimits{};
    if (const auto error = enterSandbox(limits)) {
        std::fprintf(stderr, "skavlo-raster: %s\n", error->message.c_str());
        return kNoSandbox;
    }
    // Without the libraries' own end, which has nothing to save and costs time.
    _exit(answer(*request) ? kAnswered : kNoPicture);
}
