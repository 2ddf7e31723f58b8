#pragma once

#include <chrono>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "platform/image_shrinker.h"
#include "platform/linux/posix/unique_descriptor.h"
#include "platform/linux/posix/worker_queue.h"
#include "platform/run_loop.h"

namespace skavlo {

struct ShrinkerLimits {
    std::chrono::milliseconds timeout{120'000};  // of one request, once it has its turn
    std::int64_t imageFileBytes = std::int64_t{1} << 30;
    std::size_t answerBytes = std::size_t{256} << 20;
};

// One child per request, one request after another, on a thread that the first one starts. None of
// the child's bytes is trusted.
class ChildImageShrinker final : public ImageShrinker {
  public:
    // `program` is the path of skavlo-raster. The queue outlives the shrinker, which is made and
    // destroyed on the main thread.
    ChildImageShrinker(RunLoop& mainQueue, std::string program, ShrinkerLimits limits = {});
    // Kills the child under way; no completion is called any more.
    ~ChildImageShrinker() override;
    ChildImageShrinker(const ChildImageShrinker&) = delete;
    ChildImageShrinker& operator=(const ChildImageShrinker&) = delete;

    // 1 to 16 factors, each above 0 and at most 1, and at least one byte; anything else, and an
    // image of more than 100 megapixels, counts as one that could not be decoded.
    void shrinkToPng(const std::string& path, const std::vector<double>& factors,
                     std::uint64_t limitBytes, Completion completion) override;

  private:
    // On the worker thread.
    [[nodiscard]] std::string shrink(const std::string& path,
                                     const std::vector<std::string>& request) const;

    RunLoop& mainQueue_;
    std::string program_;
    ShrinkerLimits limits_;
    UniqueDescriptor ending_;  // an event: readable once the shrinker is being destroyed
    std::shared_ptr<const bool> alive_;
    std::unique_ptr<WorkerQueue> worker_;  // the last member: the thread uses the others
};

}  // namespace skavlo
