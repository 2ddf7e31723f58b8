#include "tools/rig/wait.h"

#include <unistd.h>

#include <algorithm>
#include <cstdlib>

namespace skavlo::rig {

namespace {

int slowness() {
    const char* told = std::getenv("SKAVLO_SLOWNESS");
    return told ? std::max(std::atoi(told), 1) : 1;
}

}  // namespace

Deadline::Deadline(std::chrono::milliseconds fromNow)
    : time_(std::chrono::steady_clock::now() + fromNow * slowness()) {}

int Deadline::remaining() const {
    const auto left =
        std::chrono::ceil<std::chrono::milliseconds>(time_ - std::chrono::steady_clock::now());
    return static_cast<int>(std::clamp<std::int64_t>(left.count(), 0, 1'000'000));
}

std::optional<int> waitReadable(const std::vector<int>& descriptors, const Deadline& deadline) {
    std::vector<pollfd> polled;
    polled.reserve(descriptors.size());
    for (const int descriptor : descriptors) {
        polled.push_back({descriptor, POLLIN, 0});
    }
    // An interrupted or early return is simply another round: the deadline alone ends the waiting.
    do {
        if (poll(polled.data(), polled.size(), deadline.remaining()) > 0) {
            const auto ready = std::find_if(polled.begin(), polled.end(),
                                            [](const pollfd& entry) { return entry.revents != 0; });
            return ready->fd;
        }
    } while (!deadline.passed());
    return std::nullopt;
}

FileDescriptor& FileDescriptor::operator=(FileDescriptor&& other) noexcept {
    if (this != &other) {
        reset();
        descriptor_ = std::exchange(other.descriptor_, -1);
    }
    return *this;
}

void FileDescriptor::reset() {
    if (descriptor_ >= 0) {
        close(std::exchange(descriptor_, -1));
    }
}

}  // namespace skavlo::rig
