#include "platform/headless/headless_system.h"

#include <utility>

namespace skavlo {

namespace {

class HeadlessRegistration final : public NotificationRegistration {
  public:
    explicit HeadlessRegistration(std::shared_ptr<std::function<void()>> handler)
        : handler_(std::move(handler)) {}

  private:
    std::shared_ptr<std::function<void()>> handler_;
};

}  // namespace

std::optional<std::string> HeadlessFiles::read(const std::string& path) const {
    const auto it = files_.find(path);
    return it == files_.end() ? std::nullopt : std::optional(it->second.contents);
}

std::optional<std::uint64_t> HeadlessFiles::sizeOf(const std::string& path) const {
    const auto it = files_.find(path);
    return it == files_.end() ? std::nullopt : std::optional(it->second.contents.size());
}

bool HeadlessFiles::writeAtomically(const std::string& path, const std::string& contents) {
    files_[path] = {contents, ++lastVersion_};
    return true;
}

bool HeadlessFiles::fileExistsAtPath(const std::string& path) const {
    return files_.contains(path);
}

std::string HeadlessFiles::versionOf(const std::string& path) const {
    const auto it = files_.find(path);
    return it == files_.end() ? std::string() : std::to_string(it->second.version);
}

void HeadlessFiles::chown(const std::string& /*path*/, unsigned /*uid*/, unsigned /*gid*/) {}

void HeadlessFiles::unlink(const std::string& path) {
    files_.erase(path);
}

void HeadlessNotifications::notify_post(const std::string& name) {
    const auto [first, last] = handlers_.equal_range(name);
    for (auto it = first; it != last; ++it) {
        runLoop_.async([weak = it->second] {
            if (const auto handler = weak.lock()) (*handler)();
        });
    }
}

std::unique_ptr<NotificationRegistration> HeadlessNotifications::notify_register_dispatch(
    const std::string& name, std::function<void()> handler) {
    auto shared = std::make_shared<std::function<void()>>(std::move(handler));
    handlers_.emplace(name, shared);
    return std::make_unique<HeadlessRegistration>(std::move(shared));
}

}  // namespace skavlo
