#include "platform/linux/capture/event_socket_source.h"

#include <array>
#include <utility>

#include "platform/linux/posix/unix_socket.h"

namespace skavlo {

namespace {

constexpr std::size_t kLongestLine = 256;  // what is longer is no line of interest
constexpr std::string_view kCast = "screencast>>";

// The compositors known to have one: the variable that names the running instance, and the path
// below the session's runtime directory around that name.
struct KnownSocket {
    const char* variable;
    const char* before;
    const char* behind;
};
constexpr std::array<KnownSocket, 1> kKnown{
    {{"HYPRLAND_INSTANCE_SIGNATURE", "/hypr/", "/.socket2.sock"}}};

}  // namespace

std::optional<std::string> compositorEventSocket(const Variables& variable) {
    const char* directory = variable("XDG_RUNTIME_DIR");
    if (!directory || *directory != '/') return std::nullopt;
    for (const KnownSocket& known : kKnown) {
        const char* instance = variable(known.variable);
        if (!instance || *instance == '\0') continue;
        return std::string(directory) + known.before + instance + known.behind;
    }
    return std::nullopt;
}

Result<std::unique_ptr<EventSocketSource>> EventSocketSource::open(AsioRunLoop& runLoop,
                                                                   const std::string& path) {
    UniqueDescriptor socket = connectToSocket(path);
    if (!socket) return Error{"nobody listens at " + path};
    return std::unique_ptr<EventSocketSource>(new EventSocketSource(runLoop, std::move(socket)));
}

EventSocketSource::EventSocketSource(AsioRunLoop& runLoop, UniqueDescriptor socket)
    : socket_(std::move(socket)) {
    watch_ =
        std::make_unique<DescriptorWatch>(runLoop.context(), socket_.get(), [this] { read(); });
}

EventSocketSource::~EventSocketSource() {
    watch_.reset();
}

// One piece at a time, so that a flood cannot keep the loop from its other work.
void EventSocketSource::read() {
    constexpr std::size_t kBytes = 4096;
    std::array<char, kBytes> piece{};
    const ssize_t length = ::read(socket_.get(), piece.data(), piece.size());
    if (length < 0 && (errno == EAGAIN || errno == EINTR)) return;
    if (length <= 0) {
        casts_ = 0;
        watch_.reset();
    } else {
        take({piece.data(), static_cast<std::size_t>(length)});
    }
    setCaptures(casts_ > 0);
}

void EventSocketSource::take(std::string_view piece) {
    for (const char character : piece) {
        if (character == '\n') {
            line();
            line_.clear();
        } else if (line_.size() < kLongestLine) {
            line_ += character;
        }
    }
}

void EventSocketSource::line() {
    if (line_.size() <= kCast.size() || !line_.starts_with(kCast)) return;
    const char state = line_[kCast.size()];
    if (state == '1') ++casts_;
    // The beginning of one that ends may have been before this connection.
    if (state == '0' && casts_ > 0) --casts_;
}

}  // namespace skavlo
