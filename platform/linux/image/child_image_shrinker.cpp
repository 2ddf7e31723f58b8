#include "platform/linux/image/child_image_shrinker.h"

#include <errno.h>
#include <poll.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <optional>
#include <string_view>
#include <utility>

#include "platform/linux/image/raster_child.h"
#include "platform/linux/image/raster_protocol.h"

namespace skavlo {

namespace {

using Clock = std::chrono::steady_clock;
constexpr std::string_view kPngSignature("\x89PNG\r\n\x1a\n", 8);

bool validFactors(const std::vector<double>& factors) {
    return !factors.empty() && factors.size() <= kMaximumFactors &&
           std::all_of(factors.begin(), factors.end(),
                       [](double factor) { return factor > 0 && factor <= 1; });
}

// Waits on the child's behalf, but neither beyond a time nor once an event says stop.
class Patience {
  public:
    Patience(int stop, Clock::time_point deadline) : stop_(stop), deadline_(deadline) {}

    // Whether the descriptor can be read; false: stop.
    [[nodiscard]] bool waitFor(int descriptor) const {
        for (;;) {
            const auto left =
                std::chrono::ceil<std::chrono::milliseconds>(deadline_ - Clock::now()).count();
            std::array<pollfd, 2> waiting{pollfd{descriptor, POLLIN, 0}, pollfd{stop_, POLLIN, 0}};
            const int count = poll(waiting.data(), waiting.size(),
                                   static_cast<int>(std::clamp<std::int64_t>(left, 0, 1 << 30)));
            if (count < 0 && errno == EINTR) continue;
            return count > 0 && waiting[1].revents == 0;
        }
    }

  private:
    int stop_;
    Clock::time_point deadline_;
};

// All that is written until the other end closes; none when that is too much or takes too long.
std::optional<std::string> readToEnd(int descriptor, std::size_t maximumBytes,
                                     const Patience& patience) {
    std::string bytes;
    std::array<char, 65536> piece;
    while (patience.waitFor(descriptor)) {
        const ssize_t count = read(descriptor, piece.data(), piece.size());
        if (count < 0 && errno == EINTR) continue;
        if (count < 0) return std::nullopt;
        if (count == 0) return bytes;
        if (bytes.size() + static_cast<std::size_t>(count) > maximumBytes) return std::nullopt;
        bytes.append(piece.data(), static_cast<std::size_t>(count));
    }
    return std::nullopt;
}

bool succeeds(ChildProcess& child, const Patience& patience) {
    if (!patience.waitFor(child.pidfd())) return false;
    const auto end = child.reap();
    return end && end->success();
}

}  // namespace

ChildImageShrinker::ChildImageShrinker(RunLoop& mainQueue, std::string program,
                                       ShrinkerLimits limits)
    : mainQueue_(mainQueue),
      program_(std::move(program)),
      limits_(limits),
      ending_(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)),
      alive_(std::make_shared<const bool>(true)) {}

// The worker finds the event readable in the request under way and in all that wait.
ChildImageShrinker::~ChildImageShrinker() {
    if (ending_) eventfd_write(ending_.get(), 1);
    worker_.reset();
}

void ChildImageShrinker::shrinkToPng(const std::string& path, const std::vector<double>& factors,
                                     std::uint64_t limitBytes, Completion completion) {
    if (!worker_) worker_ = std::make_unique<WorkerQueue>("shrinker");
    std::vector<std::string> request;
    if (validFactors(factors)) {
        request = {program_, "shrink", std::to_string(limitBytes)};
        for (const double factor : factors) request.push_back(decimal(factor));
    }
    // What the completion holds belongs to the main thread, where the last hold on it goes too.
    auto held = std::make_shared<Completion>(std::move(completion));
    worker_->async([this, path, request = std::move(request), held = std::move(held)]() mutable {
        std::string png = shrink(path, request);
        mainQueue_.async([alive = std::weak_ptr(alive_), png = std::move(png),
                          held = std::move(held)]() mutable {
            if (!alive.expired()) (*held)(std::move(png));
        });
    });
}

std::string ChildImageShrinker::shrink(const std::string& path,
                                       const std::vector<std::string>& request) const {
    const Patience patience(ending_.get(), Clock::now() + limits_.timeout);
    if (request.empty() || !ending_) return {};
    const UniqueDescriptor input = openImage(path, limits_.imageFileBytes);
    if (!input) return {};
    auto child = startRasterChild(request, input);
    // Leaving early kills the child.
    if (!child) return {};
    auto png = readToEnd(child->output.get(), limits_.answerBytes, patience);
    if (!png || !png->starts_with(kPngSignature)) return {};
    if (!succeeds(child->process, patience)) return {};
    return std::move(*png);
}

}  // namespace skavlo
