#include "platform/linux/capture/path_watch.h"

#include <sys/inotify.h>

#include <array>
#include <cstring>
#include <filesystem>
#include <utility>

namespace skavlo {

PathWatch::PathWatch(asio::io_context& context, std::string path, std::function<void()> made)
    : path_(std::move(path)),
      made_(std::move(made)),
      inotify_(inotify_init1(IN_NONBLOCK | IN_CLOEXEC)) {
    if (!inotify_) return;
    rearm();
    watch_ = std::make_unique<DescriptorWatch>(context, inotify_.get(), [this] { read(); });
}

PathWatch::~PathWatch() {
    watch_.reset();
}

// Watches the deepest directory that exists on the way to the file.
void PathWatch::rearm() {
    constexpr std::uint32_t kEvents =
        IN_CREATE | IN_MOVED_TO | IN_DELETE_SELF | IN_MOVE_SELF | IN_ONLYDIR;
    if (watched_ >= 0) inotify_rm_watch(inotify_.get(), std::exchange(watched_, -1));
    for (std::filesystem::path next = path_; next.has_relative_path(); next = next.parent_path()) {
        watched_ = inotify_add_watch(inotify_.get(), next.parent_path().c_str(), kEvents);
        if (watched_ < 0) continue;
        next_ = next.filename();
        if (next == path_) return;
        // Made between the two looks: it has to be watched itself.
        const int made = inotify_add_watch(inotify_.get(), next.c_str(), kEvents);
        if (made < 0) return;
        inotify_rm_watch(inotify_.get(), made);
        return rearm();
    }
}

void PathWatch::read() {
    constexpr std::size_t kBytes = 4096;
    alignas(inotify_event) std::array<char, kBytes> buffer{};
    bool relevant = false;
    ssize_t length = 0;
    while ((length = ::read(inotify_.get(), buffer.data(), buffer.size())) > 0) {
        for (std::size_t at = 0; at < static_cast<std::size_t>(length);) {
            inotify_event event{};
            std::memcpy(&event, buffer.data() + at, sizeof event);
            const char* name = event.len > 0 ? buffer.data() + at + sizeof event : "";
            at += sizeof event + event.len;
            const bool directoryGone = (event.mask & (IN_DELETE_SELF | IN_MOVE_SELF)) != 0;
            relevant = relevant || (event.wd == watched_ && (directoryGone || next_ == name));
        }
    }
    if (!relevant) return;
    rearm();
    std::error_code error;
    if (std::filesystem::exists(path_, error)) made_();
}

}  // namespace skavlo
