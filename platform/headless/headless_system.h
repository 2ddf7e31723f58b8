// Files, notifications and pictures that exist in memory only.
#pragma once

#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "platform/bitmap.h"
#include "platform/files.h"
#include "platform/notifications.h"
#include "platform/run_loop.h"

namespace skavlo {

class HeadlessFiles final : public Files {
  public:
    [[nodiscard]] std::optional<std::string> read(const std::string& path) const override;
    [[nodiscard]] std::optional<std::uint64_t> sizeOf(const std::string& path) const override;
    bool writeAtomically(const std::string& path, const std::string& contents) override;
    [[nodiscard]] bool fileExistsAtPath(const std::string& path) const override;
    [[nodiscard]] std::string versionOf(const std::string& path) const override;
    void chown(const std::string& path, unsigned uid, unsigned gid) override;
    void unlink(const std::string& path) override;

  private:
    struct File {
        std::string contents;
        int version = 0;
    };
    std::map<std::string, File> files_;
    int lastVersion_ = 0;
};

// Delivers within the process, on the main queue.
class HeadlessNotifications final : public Notifications {
  public:
    explicit HeadlessNotifications(RunLoop& runLoop) : runLoop_(runLoop) {}
    void notify_post(const std::string& name) override;
    [[nodiscard]] std::unique_ptr<NotificationRegistration> notify_register_dispatch(
        const std::string& name, std::function<void()> handler) override;

  private:
    RunLoop& runLoop_;
    std::multimap<std::string, std::weak_ptr<std::function<void()>>> handlers_;
};

}  // namespace skavlo
