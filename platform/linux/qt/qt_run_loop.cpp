#include "platform/linux/qt/qt_run_loop.h"

#include <QThread>
#include <QTimer>
#include <algorithm>
#include <cmath>
#include <utility>

namespace skavlo {
namespace {

class QtTimer final : public Timer {
  public:
    QtTimer(double intervalSeconds, bool repeats, std::function<void()> action)
        : action_(std::move(action)) {
        timer_.setTimerType(Qt::PreciseTimer);
        timer_.setInterval(static_cast<int>(std::lround(std::max(0.0, intervalSeconds) * 1000)));
        timer_.setSingleShot(!repeats);
        now_.setSingleShot(true);
        now_.setInterval(0);
        for (QTimer* timer : {&timer_, &now_}) {
            QObject::connect(timer, &QTimer::timeout, timer, [this] { fire(); });
        }
        timer_.start();
    }

    void setFireDate(FireDate date) override {
        if (!action_) return;
        timer_.stop();
        now_.stop();
        if (date == FireDate::distantFuture) return;
        now_.start();  // not from within this call
        if (!timer_.isSingleShot()) timer_.start();
    }

    void invalidate() override {
        timer_.stop();
        now_.stop();
        action_ = nullptr;
    }

  private:
    void fire() {
        const auto action = action_;  // may destroy the timer
        if (action) action();
    }

    std::function<void()> action_;
    QTimer timer_;
    QTimer now_;
};

}  // namespace

void QtRunLoop::async(std::function<void()> block) {
    QMetaObject::invokeMethod(&context_, std::move(block), Qt::QueuedConnection);
}

bool QtRunLoop::isMainThread() const {
    return QThread::currentThread() == context_.thread();
}

std::unique_ptr<Timer> QtRunLoop::scheduledTimer(double intervalSeconds, bool repeats,
                                                 std::function<void()> action) {
    return std::make_unique<QtTimer>(intervalSeconds, repeats, std::move(action));
}

}  // namespace skavlo
