#pragma once

#include <functional>
#include <vector>

namespace skavlo {

enum class ApplicationEvent { didBecomeActive, didEnterBackground };

// Tells observers when the application comes to the foreground or leaves it. An observer added
// twice is told twice.
class ApplicationNotifications {
  public:
    void addObserver(const void* observer, ApplicationEvent event, std::function<void()> handler);
    void removeObserver(const void* observer);
    void post(ApplicationEvent event);

  private:
    struct Observation {
        const void* observer;
        ApplicationEvent event;
        std::function<void()> handler;
    };
    std::vector<Observation> observations_;
};

}  // namespace skavlo
