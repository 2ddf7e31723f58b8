#include "tests/e2e/wayland/extended/cast_session.h"

#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <filesystem>
#include <utility>

#include "platform/linux/posix/unix_socket.h"

namespace skavlo {

Result<CastSession> CastSession::start(WaylandSession& session, const rig::Deadline& deadline) {
    CastSession casts(session);
    for (const char* server : {"pipewire", "wireplumber"}) {
        auto started = session.start({server});
        if (!started) return started.error();
        casts.servers_.push_back(std::move(*started));
    }
    constexpr const char* kSocket = "pipewire-0";
    // It makes its socket a moment before it listens there.
    constexpr std::chrono::milliseconds kLookAgain(5);
    while (!session.waitForFile(kSocket, deadline) || !connectToSocket(session.file(kSocket))) {
        if (deadline.passed()) return Error{"PipeWire does not start"};
        rig::waitReadable({casts.servers_.front().endDescriptor()}, rig::Deadline(kLookAgain));
    }
    return casts;
}

std::string CastSession::copyOf(const std::string& program) const {
    const std::filesystem::path original(program);
    std::string copy = session_->file(original.filename());
    std::filesystem::copy_file(original, copy, std::filesystem::copy_options::skip_existing);
    return copy;
}

Result<CastSession::Cast> CastSession::offer(const std::string& program,
                                             const rig::Deadline& deadline) {
    constexpr const char* kAnswer = "node";
    std::filesystem::remove(session_->file(kAnswer));
    auto process = session_->start(
        {"sh", "-c", R"(exec "$0" >"$1")", copyOf(program), session_->file(kAnswer)});
    if (!process) return process.error();
    std::string node = session_->waitForContents(kAnswer, deadline);
    if (!node.ends_with('\n')) return Error{"the compositor offers no cast"};
    node.pop_back();
    return Cast{std::move(*process), std::move(node)};
}

Result<rig::Child> CastSession::receive(const std::string& node) {
    return session_->start({copyOf(SKAVLO_CAST_PEER), "consume", node});
}

Result<CastSession::Viewer> CastSession::look(const std::string& node,
                                              const std::vector<PixelPoint>& places) {
    std::array<int, 2> ends{};
    if (pipe2(ends.data(), O_CLOEXEC) != 0) return Error{"no pipe"};
    rig::FileDescriptor lines(ends[0]);
    const rig::FileDescriptor answer(ends[1]);
    std::vector<std::string> command{copyOf(SKAVLO_CAST_PEER), "look", node,
                                     std::to_string(answer.get())};
    for (const PixelPoint& place : places) {
        command.push_back(std::to_string(place.x) + "," + std::to_string(place.y));
    }
    auto process = session_->start(command, answer.get());
    if (!process) return process.error();
    return Viewer(std::move(*process), std::move(lines));
}

std::optional<std::string> CastSession::Viewer::nextLine(const rig::Deadline& deadline) {
    char character = 0;
    while (rig::waitReadable({lines_.get()}, deadline)) {
        if (read(lines_.get(), &character, 1) != 1) return std::nullopt;
        if (character == '\n') return std::exchange(begun_, {});
        begun_ += character;
    }
    return std::nullopt;
}

}  // namespace skavlo
