#pragma once

#include <string>

namespace skavlo {

// The common prefix of the files through which overlay and settings application meet. The prefix
// ends with the first part of the files' names: no directory is ever created for it.
class SettingsDirectory {
  public:
    // Directory with its trailing slash, usually "/var/mobile/Library/".
    explicit SettingsDirectory(std::string libraryPrefix)
        : libraryPrefix_(std::move(libraryPrefix)) {}

    [[nodiscard]] std::string settingsFile() const { return path(".settings.plist"); }
    [[nodiscard]] std::string customImageFile() const { return path(".custom_image.png"); }
    [[nodiscard]] std::string pidFile() const { return path(".pid"); }

  private:
    [[nodiscard]] std::string path(const char* suffix) const {
        return libraryPrefix_ + "Caches/com.oxbrel.skavlo" + suffix;
    }

    std::string libraryPrefix_;
};

inline constexpr const char* kReloadNotification = "com.oxbrel.skavlo.reload";
inline constexpr const char* kExitNotification = "com.oxbrel.skavlo.exit";

}  // namespace skavlo
