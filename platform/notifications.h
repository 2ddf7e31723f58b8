#pragma once

#include <functional>
#include <memory>
#include <string>

namespace skavlo {

// Ends the registration when destroyed.
class NotificationRegistration {
  public:
    virtual ~NotificationRegistration() = default;
};

// System-wide notifications: a name and nothing else. Posting to nobody, and a registration that
// the system refuses, are silent.
class Notifications {
  public:
    virtual ~Notifications() = default;
    virtual void notify_post(const std::string& name) = 0;
    // The handler runs on the main queue, once per post.
    [[nodiscard]] virtual std::unique_ptr<NotificationRegistration> notify_register_dispatch(
        const std::string& name, std::function<void()> handler) = 0;
};

}  // namespace skavlo
