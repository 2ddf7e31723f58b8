#pragma once

#include <QSocketNotifier>
#include <functional>
#include <memory>

namespace skavlo {

// Runs the action on the main loop when the process is asked to end (SIGTERM, SIGINT, SIGHUP). One
// at a time; from its end on these signals end the process again.
class Termination {
  public:
    explicit Termination(const std::function<void()>& action);
    ~Termination();
    Termination(const Termination&) = delete;
    Termination& operator=(const Termination&) = delete;

  private:
    int pipe_[2] = {-1, -1};
    std::unique_ptr<QSocketNotifier> notifier_;
};

}  // namespace skavlo
