// Runs as root on a kernel with uinput: a real touchscreen, libinput and udev, hotplug included.
#include <gtest/gtest.h>
#include <poll.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <memory>
#include <string>

#include "tests/rigs/touchvm/uinput_touchscreen.h"

namespace skavlo::test {
namespace {

// Generous: the machine may be emulated.
constexpr std::chrono::seconds kDeadline{60};

// input_dump, beside this program, and what it prints.
class Dump {
  public:
    Dump() {
        int in[2];
        int out[2];
        if (pipe(in) != 0 || pipe(out) != 0) std::abort();
        pid_ = fork();
        if (pid_ == 0) {
            dup2(in[0], STDIN_FILENO);
            dup2(out[1], STDOUT_FILENO);
            close(in[1]);
            execl(SKAVLO_INPUT_DUMP, "input_dump", "1920", "1080", nullptr);
            _exit(127);
        }
        close(in[0]);
        close(out[1]);
        in_ = in[1];
        out_ = out[0];
    }
    ~Dump() {
        close(in_);
        waitpid(pid_, nullptr, 0);
        close(out_);
    }
    Dump(const Dump&) = delete;
    Dump& operator=(const Dump&) = delete;

    // The next line; "(nothing)" when the deadline passes.
    std::string line() {
        const auto deadline = std::chrono::steady_clock::now() + kDeadline;
        std::size_t end;
        while ((end = unread_.find('\n')) == std::string::npos) {
            const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(
                deadline - std::chrono::steady_clock::now());
            pollfd ready{out_, POLLIN, 0};
            char part[4096];
            if (left.count() <= 0 || poll(&ready, 1, static_cast<int>(left.count())) <= 0)
                return "(nothing)";
            const ssize_t size = read(out_, part, sizeof part);
            if (size <= 0) return "(end)";
            unread_.append(part, static_cast<std::size_t>(size));
        }
        std::string result = unread_.substr(0, end);
        unread_.erase(0, end + 1);
        return result;
    }

  private:
    pid_t pid_;
    int in_;
    int out_;
    std::string unread_;
};

TEST(TouchMachine, HotplugGestureUnplugMidTouchAndReturn) {
    ASSERT_EQ(access("/dev/uinput", R_OK | W_OK), 0) << "runs in the virtual machine only";
    Dump dump;
    ASSERT_EQ(dump.line(), "ready");

    auto screen = std::make_unique<UinputTouchscreen>();
    ASSERT_EQ(dump.line(), "source libinput");
    screen->down(0, 480, 270);
    screen->down(1, 1440, 810);
    screen->sync();
    EXPECT_EQ(dump.line(), "1 [1 down 480.0,270.0] [2 down 1440.0,810.0]");
    screen->move(0, 576, 324);
    screen->move(1, 1344, 756);
    screen->sync();
    EXPECT_EQ(dump.line(), "1 [1 down 576.0,324.0] [2 down 1344.0,756.0]");
    screen->move(0, 960, 540);
    screen->sync();
    EXPECT_EQ(dump.line(), "1 [1 down 960.0,540.0] [2 down 1344.0,756.0]");
    screen->up(0);
    screen->sync();
    EXPECT_EQ(dump.line(), "1 [1 up 960.0,540.0] [2 down 1344.0,756.0]");
    screen->up(1);
    screen->sync();
    EXPECT_EQ(dump.line(), "0 [2 up 1344.0,756.0]");

    screen->down(0, 100, 100);
    screen->down(5, 200, 200);
    screen->sync();
    EXPECT_EQ(dump.line(), "1 [1 down 100.0,100.0] [2 down 200.0,200.0]");
    screen.reset();
    EXPECT_EQ(dump.line(), "0 [1 up 100.0,100.0] [2 up 200.0,200.0]");
    EXPECT_EQ(dump.line(), "source none");

    screen = std::make_unique<UinputTouchscreen>();
    ASSERT_EQ(dump.line(), "source libinput");
    screen->down(3, 0, 0);
    screen->sync();
    EXPECT_EQ(dump.line(), "1 [1 down 0.0,0.0]");
    screen->move(3, 1919, 1079);
    screen->sync();
    EXPECT_EQ(dump.line(), "1 [1 down 1919.0,1079.0]");
    screen->up(3);
    screen->sync();
    EXPECT_EQ(dump.line(), "0 [1 up 1919.0,1079.0]");
    screen.reset();
    EXPECT_EQ(dump.line(), "source none");
}

}  // namespace
}  // namespace skavlo::test
