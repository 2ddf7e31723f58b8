#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace skavlo {

class Files {
  public:
    virtual ~Files() = default;
    // Bytes of a regular file of at most 16 MiB; none when it cannot be read.
    [[nodiscard]] virtual std::optional<std::string> read(const std::string& path) const = 0;
    // Bytes of a regular file that can be opened for reading, whatever their number; else none.
    [[nodiscard]] virtual std::optional<std::uint64_t> sizeOf(const std::string& path) const = 0;
    // Old or new contents, whole, whatever happens meanwhile.
    virtual bool writeAtomically(const std::string& path, const std::string& contents) = 0;
    [[nodiscard]] virtual bool fileExistsAtPath(const std::string& path) const = 0;
    // Differs whenever the file's contents may differ; empty when there is no file.
    [[nodiscard]] virtual std::string versionOf(const std::string& path) const = 0;
    // Of the file itself, never of what a link names.
    virtual void chown(const std::string& path, unsigned uid, unsigned gid) = 0;
    virtual void unlink(const std::string& path) = 0;
};

}  // namespace skavlo
