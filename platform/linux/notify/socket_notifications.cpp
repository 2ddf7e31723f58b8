#include "platform/linux/notify/socket_notifications.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <array>
#include <asio/posix/stream_descriptor.hpp>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <optional>
#include <utility>

#include "platform/linux/posix/unique_descriptor.h"

namespace skavlo {

namespace {

constexpr gid_t kMobileGroup = 501;
constexpr mode_t kDirectoryMode = 02770;
constexpr mode_t kOnlyOwnerAndGroup = 0117;

// The socket's name inside an open directory, so that the path's length does not matter; nothing
// when it does not fit.
std::optional<sockaddr_un> addressIn(int directory, const std::string& name) {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    const int length = std::snprintf(address.sun_path, sizeof address.sun_path,
                                     "/proc/self/fd/%d/%s", directory, name.c_str());
    if (length < 0 || static_cast<std::size_t>(length) >= sizeof address.sun_path) {
        return std::nullopt;
    }
    return address;
}

UniqueDescriptor openDirectory(const std::string& path) {
    return UniqueDescriptor(open(path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
}

void makeDirectory(const std::string& path) {
    if (mkdir(path.c_str(), kDirectoryMode) != 0) return;
    const UniqueDescriptor directory = openDirectory(path);
    if (!directory) return;
    if (geteuid() == 0 && fchown(directory.get(), 0, kMobileGroup) != 0) return;
    if (fchmod(directory.get(), kDirectoryMode) != 0) return;
}

class Registration final : public NotificationRegistration {
  public:
    Registration(AsioRunLoop& runLoop, UniqueDescriptor directory, UniqueDescriptor socket,
                 std::string socketName, std::string notification, std::function<void()> handler)
        : directory_(std::move(directory)),
          socketName_(std::move(socketName)),
          notification_(std::move(notification)),
          handler_(std::make_shared<std::function<void()>>(std::move(handler))),
          socket_(runLoop.context(), socket.release()) {
        wait();
    }
    ~Registration() override { unlinkat(directory_.get(), socketName_.c_str(), 0); }
    Registration(const Registration&) = delete;
    Registration& operator=(const Registration&) = delete;

  private:
    void wait() {
        socket_.async_wait(asio::posix::stream_descriptor::wait_read,
                           [this](const asio::error_code& error) {
                               if (error) return;
                               wait();
                               receive();
                           });
    }

    void receive() {
        // The handler may destroy this registration.
        const std::weak_ptr<std::function<void()>> handler = handler_;
        std::array<char, 256> buffer{};
        while (!handler.expired()) {
            const ssize_t length =
                recv(socket_.native_handle(), buffer.data(), buffer.size(), MSG_DONTWAIT);
            if (length < 0) return;
            const bool ours =
                notification_ == std::string_view(buffer.data(), static_cast<std::size_t>(length));
            if (const auto call = handler.lock(); call && ours) (*call)();
        }
    }

    UniqueDescriptor directory_;
    std::string socketName_;
    std::string notification_;
    std::shared_ptr<std::function<void()>> handler_;
    asio::posix::stream_descriptor socket_;
};

}  // namespace

SocketNotifications::SocketNotifications(AsioRunLoop& runLoop, const std::string& runDirectory)
    : runLoop_(runLoop), directory_(runDirectory + "/notify") {
    makeDirectory(runDirectory);
    makeDirectory(directory_);
}

std::unique_ptr<NotificationRegistration> SocketNotifications::notify_register_dispatch(
    const std::string& name, std::function<void()> handler) {
    UniqueDescriptor directory = openDirectory(directory_);
    UniqueDescriptor socket(::socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
    const std::string socketName =
        name + '.' + std::to_string(getpid()) + '.' + std::to_string(++registrations_);
    const auto address = addressIn(directory.get(), socketName);
    if (!directory || !socket || !address) return nullptr;
    // A socket left by a process that had the same id.
    unlinkat(directory.get(), socketName.c_str(), 0);
    const mode_t before = umask(kOnlyOwnerAndGroup);
    const int bound =
        bind(socket.get(), reinterpret_cast<const sockaddr*>(&*address), sizeof *address);
    umask(before);
    if (bound != 0) return nullptr;
    return std::make_unique<Registration>(runLoop_, std::move(directory), std::move(socket),
                                          socketName, name, std::move(handler));
}

void SocketNotifications::notify_post(const std::string& name) {
    postNotification(directory_, name);
}

void postNotification(const std::string& directoryPath, const std::string& name) {
    UniqueDescriptor directory = openDirectory(directoryPath);
    const UniqueDescriptor socket(::socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0));
    if (!directory || !socket) return;
    const int descriptor = directory.get();
    DIR* entries = fdopendir(directory.release());
    if (!entries) return;
    const std::string prefix = name + '.';
    while (const dirent* entry = readdir(entries)) {
        if (std::strncmp(entry->d_name, prefix.c_str(), prefix.size()) != 0) continue;
        const auto address = addressIn(descriptor, entry->d_name);
        if (!address) continue;
        const ssize_t sent =
            sendto(socket.get(), name.data(), name.size(), MSG_DONTWAIT | MSG_NOSIGNAL,
                   reinterpret_cast<const sockaddr*>(&*address), sizeof *address);
        // Its process was killed and could not tidy up.
        if (sent < 0 && errno == ECONNREFUSED) unlinkat(descriptor, entry->d_name, 0);
    }
    closedir(entries);
}

}  // namespace skavlo
