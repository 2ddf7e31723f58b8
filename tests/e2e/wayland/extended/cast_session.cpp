#include "tests/e2e/wayland/extended/cast_session.h"

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

}  // namespace skavlo
