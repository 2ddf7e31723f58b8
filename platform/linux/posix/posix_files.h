#pragma once

#include "platform/files.h"

namespace skavlo {

// Safe to use as root in a directory that others may write to: files are opened without waiting,
// only regular ones are read, and a link is never followed when something is changed.
class PosixFiles final : public Files {
  public:
    [[nodiscard]] std::optional<std::string> read(const std::string& path) const override;
    [[nodiscard]] std::optional<std::uint64_t> sizeOf(const std::string& path) const override;
    bool writeAtomically(const std::string& path, const std::string& contents) override;
    [[nodiscard]] bool fileExistsAtPath(const std::string& path) const override;
    [[nodiscard]] std::string versionOf(const std::string& path) const override;
    void chown(const std::string& path, unsigned uid, unsigned gid) override;
    void unlink(const std::string& path) override;
};

}  // namespace skavlo
