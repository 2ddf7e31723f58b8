#pragma once

#include <string>

#include "platform/notifications.h"

namespace skavlo {

// For processes that post and never listen: the notifications of SocketNotifications without a run
// loop. Posts from any thread; every registration is refused, silently.
class SocketNotificationPoster final : public Notifications {
  public:
    explicit SocketNotificationPoster(const std::string& runDirectory);
    void notify_post(const std::string& name) override;
    [[nodiscard]] std::unique_ptr<NotificationRegistration> notify_register_dispatch(
        const std::string& name, std::function<void()> handler) override;

  private:
    std::string directory_;
};

}  // namespace skavlo
