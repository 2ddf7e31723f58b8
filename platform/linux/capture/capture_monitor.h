#pragma once

#include <functional>
#include <memory>
#include <vector>

#include "platform/linux/capture/capture_source.h"
#include "platform/screen.h"

namespace skavlo {

// The screen is captured while at least one source says so. Without a source that could know, it
// is not.
class CaptureMonitor final : public CaptureState {
  public:
    void add(std::unique_ptr<CaptureSource> source);

    [[nodiscard]] bool isCaptured() const override { return captured_; }
    void setDidChangeHandler(std::function<void()> handler) override;

  private:
    void update();

    bool captured_ = false;
    std::function<void()> didChange_;
    std::vector<std::unique_ptr<CaptureSource>> sources_;
};

}  // namespace skavlo
