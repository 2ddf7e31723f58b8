#pragma once

#include <QObject>
#include <functional>
#include <memory>

#include "platform/run_loop.h"

namespace skavlo {

// Qt's loop of the thread that constructs it, which has to be the application's main thread. What
// is posted and has not run by its end is dropped.
class QtRunLoop final : public RunLoop {
  public:
    void async(std::function<void()> block) override;
    [[nodiscard]] bool isMainThread() const override;
    std::unique_ptr<Timer> scheduledTimer(double intervalSeconds, bool repeats,
                                          std::function<void()> action) override;

  private:
    QObject context_;
};

}  // namespace skavlo
