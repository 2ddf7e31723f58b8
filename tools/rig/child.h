// A child process described as data; it never outlives the thread that started it.
#pragma once

#include <sys/types.h>

#include <chrono>
#include <optional>
#include <string>
#include <vector>

#include "platform/result.h"
#include "tools/rig/wait.h"

namespace skavlo::rig {

struct ChildOptions {
    std::vector<std::string> arguments;    // the program first, as a path or looked up in PATH
    std::vector<std::string> environment;  // over the own: NAME=VALUE, or NAME to take it away
    std::vector<int> inherited;            // descriptors it gets, under the same numbers
    int output = -1;                       // its standard output and error; -1: the own ones
};

// Runs in a session of its own, so that the terminal's Ctrl-C reaches the parent alone, which then
// stops its children in order. When the parent is killed, the kernel sends the child a SIGTERM.
class Child {
  public:
    static Result<Child> start(const ChildOptions& options);

    Child(Child&& other) noexcept;
    Child& operator=(Child&& other) noexcept;
    ~Child() { stop(); }  // NOLINT(bugprone-exception-escape): only memory could run out

    // Readable once the process has ended.
    [[nodiscard]] int endDescriptor() const { return process_.get(); }
    [[nodiscard]] pid_t pid() const { return pid_; }
    [[nodiscard]] bool running();
    void signal(int number) const;
    // The status of waitpid(); none: still running at the deadline.
    std::optional<int> wait(const Deadline& deadline);
    // SIGTERM, and SIGKILL after the grace. Returns the status; none: was not running any more.
    std::optional<int> stop(std::chrono::milliseconds grace = std::chrono::seconds(5));

  private:
    Child(pid_t pid, FileDescriptor process) : pid_(pid), process_(std::move(process)) {}

    pid_t pid_ = -1;  // -1: reaped
    FileDescriptor process_;
};

// "exited with status 1", "was ended by signal 9".
std::string describeStatus(int status);

}  // namespace skavlo::rig
