#include "platform/linux/image/raster_child.h"

#include <errno.h>
#include <fcntl.h>
#include <signal.h>
#include <string.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <charconv>
#include <utility>

namespace skavlo {

namespace {

// Enough for the decoders' recursion; the C library gives each thread as much address space.
constexpr rlim_t kStackBytes = 2 * 1024 * 1024;

// No home: the child reads the system's fonts and configuration and leaves no cache behind. The
// languages choose among the shapes that scripts share; otherwise the text itself decides.
const std::vector<std::string>& childEnvironment() {
    static const std::vector<std::string> environment{"LANG=C.UTF-8", "PANGO_LANGUAGE=en:zh-cn",
                                                      "HOME=/nonexistent",
                                                      "XDG_CACHE_HOME=/nonexistent"};
    return environment;
}

ChildDescription describe(const std::vector<std::string>& arguments, int input, int output) {
    ChildDescription description;
    description.arguments = arguments;
    description.environment = childEnvironment();
    description.descriptors = {{STDIN_FILENO, input}, {STDOUT_FILENO, output}};
    description.group = ChildGroup::ownSession;
    description.limits = {{RLIMIT_STACK, kStackBytes}};
    description.deathSignal = SIGKILL;
    return description;
}

}  // namespace

UniqueDescriptor openImage(const std::string& path, std::int64_t maximumBytes) {
    UniqueDescriptor file(open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY));
    struct stat status {};
    if (!file || fstat(file.get(), &status) != 0) return {};
    if (!S_ISREG(status.st_mode) || status.st_size > maximumBytes) return {};
    return file;
}

Result<RasterChild> startRasterChild(const std::vector<std::string>& arguments,
                                     const UniqueDescriptor& input) {
    int ends[2];
    if (pipe2(ends, O_CLOEXEC) != 0) return Error{std::string("pipe2: ") + strerror(errno)};
    UniqueDescriptor readEnd(ends[0]);
    const UniqueDescriptor writeEnd(ends[1]);
    auto child = spawnChild(describe(arguments, input.get(), writeEnd.get()));
    if (!child) return child.error();
    return RasterChild{std::move(*child), std::move(readEnd)};
}

std::string decimal(double value) {
    std::array<char, 32> digits;
    const auto result = std::to_chars(digits.data(), digits.data() + digits.size(), value);
    return {digits.data(), result.ptr};
}

}  // namespace skavlo
