#include "platform/linux/qt/termination.h"

#include <fcntl.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <csignal>

namespace skavlo {
namespace {

std::atomic<int> writeEnd = -1;
constexpr int kSignals[] = {SIGTERM, SIGINT, SIGHUP};

void note(int /*signal*/) {
    const int saved = errno;
    const char byte = 0;
    // Full means that enough has been said.
    [[maybe_unused]] const ssize_t written = write(writeEnd, &byte, 1);
    errno = saved;
}

void setHandlers(void (*handler)(int)) {
    struct sigaction action {};
    action.sa_handler = handler;
    action.sa_flags = SA_RESTART;
    for (const int signal : kSignals) sigaction(signal, &action, nullptr);
}

}  // namespace

Termination::Termination(const std::function<void()>& action) {
    if (pipe2(pipe_, O_CLOEXEC | O_NONBLOCK) != 0) return;
    writeEnd = pipe_[1];
    notifier_ = std::make_unique<QSocketNotifier>(pipe_[0], QSocketNotifier::Read);
    QObject::connect(notifier_.get(), &QSocketNotifier::activated, notifier_.get(), [this, action] {
        char bytes[16];
        while (read(pipe_[0], bytes, sizeof bytes) > 0) {
        }
        action();
    });
    setHandlers(note);
}

Termination::~Termination() {
    if (!notifier_) return;
    setHandlers(SIG_DFL);
    writeEnd = -1;
    notifier_.reset();
    close(pipe_[0]);
    close(pipe_[1]);
}

}  // namespace skavlo
