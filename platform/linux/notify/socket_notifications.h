#pragma once

#include <string>

#include "platform/linux/loop/asio_run_loop.h"
#include "platform/notifications.h"

namespace skavlo {

// Notifications as datagrams that hold a name and nothing else, sent to every registrant's socket
// in one directory. The directory (root, group mobile, set-gid, closed to others) says who may
// register and post; it is made when it is missing, if that can be done.
class SocketNotifications final : public Notifications {
  public:
    SocketNotifications(AsioRunLoop& runLoop, const std::string& runDirectory);
    void notify_post(const std::string& name) override;
    [[nodiscard]] std::unique_ptr<NotificationRegistration> notify_register_dispatch(
        const std::string& name, std::function<void()> handler) override;

  private:
    AsioRunLoop& runLoop_;
    std::string directory_;
    unsigned registrations_ = 0;
};

// Posts from any process, without a run loop.
void postNotification(const std::string& directory, const std::string& name);

}  // namespace skavlo
