#include "tools/rig/x_authority.h"

#include <sys/mman.h>
#include <sys/random.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

namespace skavlo::rig {

namespace {

// Every field is a big-endian 16-bit length and its bytes; the file's first field has no length.
void appendField(std::string& file, const std::string& value) {
    file += static_cast<char>(value.size() >> 8);
    file += static_cast<char>(value.size() & 0xFF);
    file += value;
}

std::string fileWith(const std::string& cookie) {
    std::string file = "\xFF\xFF";  // the family of any address
    appendField(file, "");          // any address
    appendField(file, "");          // any display number
    appendField(file, "MIT-MAGIC-COOKIE-1");
    appendField(file, cookie);
    return file;
}

Error failure(const char* what) {
    return Error{std::string(what) + ": " + std::strerror(errno)};
}

}  // namespace

Result<XAuthority> XAuthority::create() {
    std::string cookie(16, '\0');
    if (getrandom(cookie.data(), cookie.size(), 0) != static_cast<ssize_t>(cookie.size())) {
        return failure("cannot make a random secret");
    }
    const std::string contents = fileWith(cookie);
    FileDescriptor file(memfd_create("xauthority", MFD_CLOEXEC));
    if (!file.valid() || write(file.get(), contents.data(), contents.size()) !=
                             static_cast<ssize_t>(contents.size())) {
        return failure("cannot write the authority file");
    }
    return XAuthority(std::move(cookie), std::move(file));
}

std::string XAuthority::path() const {
    return "/proc/" + std::to_string(getpid()) + "/fd/" + std::to_string(file_.get());
}

}  // namespace skavlo::rig
