#include "app/pid_file.h"

#include <cstddef>
#include <cstdint>
#include <string_view>

#include "settings/scan.h"

namespace skavlo {

namespace {

// Bytes of the sequence that begins here; 0 when it is not well formed (RFC 3629).
std::size_t sequenceLength(std::string_view text) {
    const auto byte = [&](std::size_t i) { return static_cast<std::uint8_t>(text[i]); };
    if (byte(0) < 0x80) return 1;
    const std::size_t length = byte(0) >= 0xF0 ? 4 : byte(0) >= 0xE0 ? 3 : 2;
    if (byte(0) < 0xC2 || byte(0) > 0xF4 || text.size() < length) return 0;
    for (std::size_t i = 1; i < length; ++i) {
        if ((byte(i) & 0xC0U) != 0x80) return 0;
    }
    const bool overlong =
        (byte(0) == 0xE0 && byte(1) < 0xA0) || (byte(0) == 0xF0 && byte(1) < 0x90);
    const bool surrogate = byte(0) == 0xED && byte(1) >= 0xA0;
    const bool beyond = byte(0) == 0xF4 && byte(1) >= 0x90;
    return overlong || surrogate || beyond ? 0 : length;
}

bool isUtf8(std::string_view text) {
    while (!text.empty()) {
        const std::size_t length = sequenceLength(text);
        if (length == 0) return false;
        text.remove_prefix(length);
    }
    return true;
}

}  // namespace

std::optional<int> readPidFile(const Files& files, const std::string& path) {
    const auto contents = files.read(path);
    if (!contents || !isUtf8(*contents)) return std::nullopt;
    return scanInteger<std::int32_t>(*contents);
}

}  // namespace skavlo
