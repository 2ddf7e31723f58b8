#include "tools/picture/output_file.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <string_view>

#include "platform/linux/posix/unique_descriptor.h"

namespace skavlo {

namespace {

bool writeAll(int descriptor, std::string_view bytes) {
    while (!bytes.empty()) {
        const ssize_t written = write(descriptor, bytes.data(), bytes.size());
        if (written < 0 && errno == EINTR) continue;
        if (written < 0) return false;
        bytes.remove_prefix(static_cast<std::size_t>(written));
    }
    return true;
}

bool writeTo(const std::string& path, int flags, const std::string& bytes) {
    constexpr mode_t kAsTheUserLikes = 0666;  // less the mask
    const UniqueDescriptor file(open(path.c_str(), O_WRONLY | O_CLOEXEC | flags, kAsTheUserLikes));
    return file && writeAll(file.get(), bytes);
}

bool replace(const std::string& path, const std::string& bytes) {
    const std::string temporary = path + "." + std::to_string(getpid()) + ".new";
    if (writeTo(temporary, O_CREAT | O_EXCL, bytes) &&
        std::rename(temporary.c_str(), path.c_str()) == 0) {
        return true;
    }
    const int reason = errno;
    if (reason != EEXIST) unlink(temporary.c_str());
    errno = reason;
    return false;
}

}  // namespace

std::optional<Error> writeFile(const std::string& path, const std::string& bytes) {
    std::error_code unknown;
    // A link stays one: what it names is replaced.
    const auto named = std::filesystem::weakly_canonical(path, unknown);
    const std::string target = unknown ? path : named.string();
    const auto status = std::filesystem::status(target, unknown);
    const bool special = exists(status) && !is_regular_file(status);
    const bool written = special ? writeTo(target, 0, bytes) : replace(target, bytes);
    if (written) return std::nullopt;
    return Error{"cannot write " + path + ": " + std::strerror(errno)};
}

}  // namespace skavlo
