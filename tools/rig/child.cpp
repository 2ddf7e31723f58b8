#include "tools/rig/child.h"

#include <fcntl.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <iterator>
#include <utility>

namespace skavlo::rig {

namespace {

std::string nameOf(const std::string& variable) {
    return variable.substr(0, variable.find('='));
}

// The parent's variables but those that are given, then the given ones that have a value.
std::vector<std::string> mergedEnvironment(const std::vector<std::string>& given) {
    std::vector<std::string> merged;
    for (char** entry = environ; *entry != nullptr; ++entry) {
        const auto sameName = [&](const std::string& other) {
            return nameOf(other) == nameOf(*entry);
        };
        if (std::none_of(given.begin(), given.end(), sameName)) {
            merged.emplace_back(*entry);
        }
    }
    std::copy_if(given.begin(), given.end(), std::back_inserter(merged),
                 [](const std::string& entry) { return entry.find('=') != std::string::npos; });
    return merged;
}

std::vector<char*> pointers(const std::vector<std::string>& texts) {
    std::vector<char*> result;
    result.reserve(texts.size() + 1);
    for (const std::string& text : texts) {
        result.push_back(const_cast<char*>(text.c_str()));  // NOLINT: exec's type, never written
    }
    result.push_back(nullptr);
    return result;
}

// What the child does between fork and exec needs no memory of its own, as other threads of the
// parent may hold the allocator's lock: all of it is prepared here.
struct Prepared {
    explicit Prepared(const ChildOptions& options)
        : environment(mergedEnvironment(options.environment)),
          argumentPointers(pointers(options.arguments)),
          environmentPointers(pointers(environment)) {}

    std::vector<std::string> environment;
    std::vector<char*> argumentPointers;
    std::vector<char*> environmentPointers;
};

[[noreturn]] void runChild(const ChildOptions& options, const Prepared& prepared, pid_t parent,
                           int failure) {
    setsid();
    prctl(PR_SET_PDEATHSIG, SIGTERM);
    if (getppid() != parent) {
        _exit(127);  // the parent was gone before it could be watched
    }
    sigset_t none;
    sigemptyset(&none);
    sigprocmask(SIG_SETMASK, &none, nullptr);
    for (const int number : {SIGINT, SIGTERM, SIGHUP, SIGPIPE}) {
        std::signal(number, SIG_DFL);
    }
    for (const int descriptor : options.inherited) {
        fcntl(descriptor, F_SETFD, 0);
    }
    if (options.output >= 0) {
        dup2(options.output, STDOUT_FILENO);
        dup2(options.output, STDERR_FILENO);
    }
    execvpe(prepared.argumentPointers[0], prepared.argumentPointers.data(),
            prepared.environmentPointers.data());
    const int error = errno;
    [[maybe_unused]] const auto written = write(failure, &error, sizeof error);
    _exit(127);
}

}  // namespace

Result<Child> Child::start(const ChildOptions& options) {
    const std::string& program = options.arguments.front();
    const Prepared prepared(options);
    int ends[2] = {-1, -1};
    if (pipe2(ends, O_CLOEXEC) != 0) {
        return Error{"cannot make a pipe: " + std::string(std::strerror(errno))};
    }
    FileDescriptor failureRead(ends[0]);
    FileDescriptor failureWrite(ends[1]);
    const pid_t parent = getpid();
    const pid_t pid = fork();
    if (pid == 0) {
        runChild(options, prepared, parent, failureWrite.get());
    }
    if (pid < 0) {
        return Error{"cannot start " + program + ": " + std::strerror(errno)};
    }
    // Not through <sys/pidfd.h>: glibc 2.36 declares it without C linkage.
    Child child(pid, FileDescriptor(static_cast<int>(syscall(SYS_pidfd_open, pid, 0))));
    failureWrite.reset();
    int error = 0;
    if (read(failureRead.get(), &error, sizeof error) == sizeof error) {
        child.stop();
        return Error{"cannot start " + program + ": " + std::strerror(error)};
    }
    if (!child.process_.valid()) {
        child.signal(SIGKILL);
        waitpid(std::exchange(child.pid_, -1), nullptr, 0);
        return Error{"cannot watch " + program + ": the kernel has no process descriptors"};
    }
    return child;
}

Child::Child(Child&& other) noexcept
    : pid_(std::exchange(other.pid_, -1)), process_(std::move(other.process_)) {}

Child& Child::operator=(Child&& other) noexcept {
    if (this != &other) {
        stop();
        pid_ = std::exchange(other.pid_, -1);
        process_ = std::move(other.process_);
    }
    return *this;
}

bool Child::running() {
    return pid_ > 0 && !wait(Deadline(std::chrono::milliseconds(0))).has_value();
}

void Child::signal(int number) const {
    if (pid_ > 0) {
        kill(pid_, number);
    }
}

std::optional<int> Child::wait(const Deadline& deadline) {
    if (pid_ <= 0 || !waitReadable({process_.get()}, deadline)) {
        return std::nullopt;
    }
    int status = 0;
    if (waitpid(pid_, &status, WNOHANG) != pid_) {
        return std::nullopt;
    }
    pid_ = -1;
    return status;
}

std::optional<int> Child::stop(std::chrono::milliseconds grace) {
    if (pid_ <= 0) {
        return std::nullopt;
    }
    signal(SIGTERM);
    if (const auto status = wait(Deadline(grace))) {
        return status;
    }
    signal(SIGKILL);
    return wait(Deadline(std::chrono::seconds(5)));
}

std::string describeStatus(int status) {
    return WIFSIGNALED(status) ? "was ended by signal " + std::to_string(WTERMSIG(status))
                               : "exited with status " + std::to_string(WEXITSTATUS(status));
}

}  // namespace skavlo::rig
