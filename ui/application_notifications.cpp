#include "ui/application_notifications.h"

#include <utility>

namespace skavlo {

void ApplicationNotifications::addObserver(const void* observer, ApplicationEvent event,
                                           std::function<void()> handler) {
    observations_.push_back({observer, event, std::move(handler)});
}

void ApplicationNotifications::removeObserver(const void* observer) {
    std::erase_if(observations_, [observer](const auto& o) { return o.observer == observer; });
}

void ApplicationNotifications::post(ApplicationEvent event) {
    // A copy: a handler may add observers, who wait for the next event.
    const auto observations = observations_;
    for (const Observation& observation : observations) {
        if (observation.event == event) observation.handler();
    }
}

}  // namespace skavlo
