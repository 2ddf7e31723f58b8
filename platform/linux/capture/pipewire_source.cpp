#include "platform/linux/capture/pipewire_source.h"

#include <cstdlib>
#include <utility>

#include "platform/linux/posix/unix_socket.h"

namespace skavlo {

namespace {

// A server makes its socket a moment before it listens there.
constexpr unsigned kRetries = 6;
constexpr double kFirstRetrySeconds = 0.05;

std::string environmentVariable(const char* name) {
    const char* value = std::getenv(name);
    return value ? value : std::string();
}

}  // namespace

std::optional<std::string> pipeWireSocket() {
    std::string name = environmentVariable("PIPEWIRE_REMOTE");
    if (name.empty()) name = "pipewire-0";
    if (name.front() == '/') return name;
    std::string directory = environmentVariable("PIPEWIRE_RUNTIME_DIR");
    if (directory.empty()) directory = environmentVariable("XDG_RUNTIME_DIR");
    if (directory.empty() || directory.front() != '/') return std::nullopt;
    return directory + "/" + name;
}

PipeWireSource::PipeWireSource(AsioRunLoop& runLoop, std::string socketPath)
    : runLoop_(runLoop), socketPath_(std::move(socketPath)) {
    connect();
}

PipeWireSource::~PipeWireSource() = default;

// The watch comes before the attempt, so that nothing can be missed between them.
void PipeWireSource::connect() {
    retry_.reset();
    waitForServer();
    UniqueDescriptor socket = connectToSocket(socketPath_);
    if (!socket) return tryLater();
    auto opened = PipeWireConnection::open(
        runLoop_, std::move(socket), [this] { graphChanged(); },
        [this] {
            runLoop_.async([this, alive = std::weak_ptr(alive_)] {
                if (!alive.expired()) lost();
            });
        });
    if (!opened) return tryLater();
    connection_ = std::move(*opened);
    runLoop_.async([this, alive = std::weak_ptr(alive_)] {
        // Not at once: this may be the watch's own call.
        if (!alive.expired() && connection_) appearance_.reset();
    });
}

void PipeWireSource::waitForServer() {
    if (appearance_) return;
    appearance_.emplace(runLoop_.context(), socketPath_, [this] {
        retries_ = 0;
        if (!connection_) connect();
    });
}

void PipeWireSource::tryLater() {
    if (retries_ == kRetries) return;
    const double seconds = kFirstRetrySeconds * (1U << retries_++);
    retry_ = runLoop_.scheduledTimer(seconds, false, [this] { connect(); });
}

void PipeWireSource::lost() {
    connection_.reset();
    setCaptures(false);
    waitForServer();
    tryLater();
}

// A server that says something works; one that only ever closes connections is left alone after a
// few of them.
void PipeWireSource::graphChanged() {
    retries_ = 0;
    if (connection_) setCaptures(connection_->graph().casting());
}

}  // namespace skavlo
