#include "platform/linux/posix/posix_files.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>

#include "platform/linux/posix/unique_descriptor.h"

namespace skavlo {

namespace {

constexpr off_t kLargestFile = off_t{16} << 20U;

bool writeAll(int descriptor, const std::string& contents) {
    std::size_t done = 0;
    while (done < contents.size()) {
        const ssize_t written = ::write(descriptor, contents.data() + done, contents.size() - done);
        if (written < 0 && errno == EINTR) continue;
        if (written <= 0) return false;
        done += static_cast<std::size_t>(written);
    }
    return true;
}

// Without waiting for anything; an empty descriptor when it is not a regular file.
UniqueDescriptor openRegular(const std::string& path, struct stat& status) {
    UniqueDescriptor file(open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY));
    if (file && fstat(file.get(), &status) == 0 && S_ISREG(status.st_mode)) return file;
    return UniqueDescriptor();
}

}  // namespace

std::optional<std::string> PosixFiles::read(const std::string& path) const {
    struct stat status {};
    const UniqueDescriptor file = openRegular(path, status);
    if (!file || status.st_size > kLargestFile) return std::nullopt;
    std::string contents(static_cast<std::size_t>(status.st_size), '\0');
    std::size_t done = 0;
    while (done < contents.size()) {
        const ssize_t count = ::read(file.get(), contents.data() + done, contents.size() - done);
        if (count < 0 && errno == EINTR) continue;
        if (count < 0) return std::nullopt;
        if (count == 0) break;
        done += static_cast<std::size_t>(count);
    }
    contents.resize(done);
    return contents;
}

std::optional<std::uint64_t> PosixFiles::sizeOf(const std::string& path) const {
    struct stat status {};
    if (!openRegular(path, status)) return std::nullopt;
    return static_cast<std::uint64_t>(status.st_size);
}

// Not synced to the disk: a process that dies at any moment leaves the old file or the new one, and
// for a machine that dies the file system keeps the order of writing and renaming. A writer that is
// killed on the way leaves its one temporary file; nobody clears it away, because it
// looks like that of a writer still at work.
bool PosixFiles::writeAtomically(const std::string& path, const std::string& contents) {
    std::string temporary = path + ".XXXXXX";
    const UniqueDescriptor file(mkostemp(temporary.data(), O_CLOEXEC));
    if (!file) return false;
    // mkostemp makes private files; the settings' readers run as other users.
    constexpr mode_t kReadableByAll = 0644;
    const bool whole = fchmod(file.get(), kReadableByAll) == 0 && writeAll(file.get(), contents) &&
                       rename(temporary.c_str(), path.c_str()) == 0;
    if (!whole) ::unlink(temporary.c_str());
    return whole;
}

bool PosixFiles::fileExistsAtPath(const std::string& path) const {
    struct stat status {};
    return stat(path.c_str(), &status) == 0;
}

std::string PosixFiles::versionOf(const std::string& path) const {
    struct stat status {};
    if (stat(path.c_str(), &status) != 0) return {};
    char text[128];
    std::snprintf(text, sizeof text, "%llu:%llu:%lld:%lld.%09ld",
                  static_cast<unsigned long long>(status.st_dev),
                  static_cast<unsigned long long>(status.st_ino),
                  static_cast<long long>(status.st_size),
                  static_cast<long long>(status.st_mtim.tv_sec), status.st_mtim.tv_nsec);
    return text;
}

void PosixFiles::chown(const std::string& path, unsigned uid, unsigned gid) {
    const UniqueDescriptor file(
        open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY));
    struct stat status {};
    // Only what the caller made itself: a link put in its place must not change hands.
    if (!file || fstat(file.get(), &status) != 0 || !S_ISREG(status.st_mode) ||
        status.st_nlink != 1 || status.st_uid != geteuid()) {
        return;
    }
    if (fchown(file.get(), uid, gid) != 0) return;
}

void PosixFiles::unlink(const std::string& path) {
    ::unlink(path.c_str());
}

}  // namespace skavlo
