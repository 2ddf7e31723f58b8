#pragma once

#include <functional>
#include <utility>

namespace skavlo {

// One way of telling that the screen is captured. It waits for events in the run loop and costs
// nothing while none come; it has its say on the main thread.
class CaptureSource {
  public:
    CaptureSource() = default;
    virtual ~CaptureSource() = default;
    CaptureSource(const CaptureSource&) = delete;
    CaptureSource& operator=(const CaptureSource&) = delete;

    [[nodiscard]] bool captures() const { return captures_; }
    // Called after each change.
    void setChangeHandler(std::function<void()> handler) { changed_ = std::move(handler); }

  protected:
    void setCaptures(bool captures) {
        if (std::exchange(captures_, captures) != captures && changed_) changed_();
    }

  private:
    bool captures_ = false;
    std::function<void()> changed_;
};

}  // namespace skavlo
