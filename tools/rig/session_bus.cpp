#include "tools/rig/session_bus.h"

#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <cstdlib>

namespace skavlo::rig {

namespace {

constexpr std::chrono::seconds kStartTime(15);

// Up to the end of a line; empty: the deadline passed or the other end was closed first.
std::string readLine(int descriptor, const Deadline& deadline) {
    std::string line;
    while (line.empty() || line.back() != '\n') {
        std::array<char, 512> piece{};
        if (!waitReadable({descriptor}, deadline)) {
            return {};
        }
        const ssize_t length = read(descriptor, piece.data(), piece.size());
        if (length <= 0) {
            return {};
        }
        line.append(piece.data(), static_cast<std::size_t>(length));
    }
    line.pop_back();
    return line;
}

}  // namespace

Result<SessionBus> SessionBus::start(const std::vector<std::string>& environment) {
    std::array<int, 2> ends{};
    if (pipe2(ends.data(), O_CLOEXEC) != 0) {
        return Error{"no pipe for the message bus"};
    }
    const FileDescriptor address(ends[0]);
    FileDescriptor answer(ends[1]);
    // It talks of every service that it starts.
    const FileDescriptor nowhere(open("/dev/null", O_WRONLY | O_CLOEXEC));
    auto bus = Child::start({{"dbus-daemon", "--session", "--nofork", "--nopidfile",
                              "--print-address=" + std::to_string(answer.get())},
                             environment,
                             {answer.get()},
                             nowhere.get()});
    if (!bus) {
        return bus.error();
    }
    answer.reset();
    std::string line = readLine(address.get(), Deadline(kStartTime));
    if (line.empty()) {
        return Error{"dbus-daemon told no address"};
    }
    return SessionBus(std::move(*bus), std::move(line));
}

void SessionBus::enterEnvironment() const {
    setenv("DBUS_SESSION_BUS_ADDRESS", address_.c_str(), 1);
}

}  // namespace skavlo::rig
