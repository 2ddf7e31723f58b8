#include "platform/linux/notify/socket_notification_poster.h"

#include "platform/linux/notify/socket_notifications.h"

namespace skavlo {

SocketNotificationPoster::SocketNotificationPoster(const std::string& runDirectory)
    : directory_(runDirectory + "/notify") {}

void SocketNotificationPoster::notify_post(const std::string& name) {
    postNotification(directory_, name);
}

std::unique_ptr<NotificationRegistration> SocketNotificationPoster::notify_register_dispatch(
    const std::string& /*name*/, std::function<void()> /*handler*/) {
    return nullptr;
}

}  // namespace skavlo
