#include "platform/linux/capture/grab_rate.h"

namespace skavlo {

namespace {

std::int64_t area(PixelSize size) {
    return static_cast<std::int64_t>(size.width) * size.height;
}

}  // namespace

bool GrabRate::isLarge(PixelSize grabbed, PixelSize screen) {
    constexpr int kHundredths = 100;
    return area(grabbed) * kHundredths >= area(screen) * kLeastShareOfScreen;
}

bool GrabRate::grabbed(std::uint32_t client, std::uint32_t time) {
    forget(time);
    std::deque<std::uint32_t>& times = grabs_[client];
    times.push_back(time);
    if (times.size() > kGrabs) times.pop_front();
    return times.size() == kGrabs;
}

void GrabRate::forget(std::uint32_t now) {
    for (auto client = grabs_.begin(); client != grabs_.end();) {
        auto& times = client->second;
        while (!times.empty() && now - times.front() > kWithinMilliseconds) times.pop_front();
        client = times.empty() ? grabs_.erase(client) : std::next(client);
    }
}

}  // namespace skavlo
