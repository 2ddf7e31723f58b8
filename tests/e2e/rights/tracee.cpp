#include "tests/e2e/rights/tracee.h"

#include <errno.h>
#include <fcntl.h>
#include <string.h>
#include <sys/ptrace.h>
#include <sys/wait.h>
#include <unistd.h>

#include <fstream>
#include <string_view>
#include <utility>

namespace skavlo {

namespace {

Error systemError(const char* call) {
    return Error{std::string(call) + ": " + strerror(errno)};
}

rig::FileDescriptor openMemory(pid_t thread) {
    const std::string path = "/proc/" + std::to_string(thread) + "/mem";
    return rig::FileDescriptor(open(path.c_str(), O_RDWR | O_CLOEXEC));
}

// Where the kernel's own code in every process calls the system; 0: nowhere.
std::uint64_t findCallInstruction(pid_t thread) {
    constexpr std::string_view kInstruction = "\x0f\x05";
    std::ifstream maps("/proc/" + std::to_string(thread) + "/maps");
    for (std::string line; std::getline(maps, line);) {
        if (!line.ends_with("[vdso]")) continue;
        std::size_t digits = 0;
        const std::uint64_t begin = std::stoull(line, &digits, 16);
        const std::uint64_t end = std::stoull(line.substr(digits + 1), nullptr, 16);
        std::string code(end - begin, '\0');
        const auto length =
            pread(openMemory(thread).get(), code.data(), code.size(), static_cast<off_t>(begin));
        const std::size_t at = code.find(kInstruction);
        if (length > 0 && at != std::string::npos) return begin + at;
    }
    return 0;
}

}  // namespace

Result<Tracee> Tracee::stop(pid_t thread, const rig::Deadline& deadline) {
    if (ptrace(PTRACE_SEIZE, thread, nullptr, nullptr) != 0) return systemError("tracing");
    Tracee tracee(thread);
    if (ptrace(PTRACE_INTERRUPT, thread, nullptr, nullptr) != 0) return systemError("stopping");
    if (!tracee.waitForStop(deadline)) return Error{"it does not stop"};
    if (ptrace(PTRACE_GETREGS, thread, nullptr, &tracee.registers_) != 0)
        return systemError("reading registers");
    tracee.callInstruction_ = findCallInstruction(thread);
    if (tracee.callInstruction_ == 0) return Error{"nothing there calls the system"};
    return tracee;
}

Tracee::Tracee(Tracee&& other) noexcept
    : thread_(std::exchange(other.thread_, -1)),
      registers_(other.registers_),
      callInstruction_(other.callInstruction_) {}

// A call that it was waiting in is seen to have been interrupted.
Tracee::~Tracee() {
    if (thread_ < 0) return;
    if (registers_.rip != 0) ptrace(PTRACE_SETREGS, thread_, nullptr, &registers_);
    ptrace(PTRACE_DETACH, thread_, nullptr, nullptr);
}

bool Tracee::waitForStop(const rig::Deadline& deadline) const {
    constexpr std::chrono::milliseconds kLookAgain(1);
    while (!deadline.passed()) {
        siginfo_t change{};
        // The end is left to whoever waits for the process.
        if (waitid(P_PID, static_cast<id_t>(thread_), &change,
                   WSTOPPED | WEXITED | WNOWAIT | WNOHANG | __WALL) != 0)
            return false;
        if (change.si_pid == 0) {
            rig::waitReadable({}, rig::Deadline(kLookAgain));
            continue;
        }
        return change.si_code == CLD_TRAPPED &&
               waitpid(thread_, nullptr, WNOHANG | __WALL) == thread_;
    }
    return false;
}

std::optional<std::int64_t> Tracee::call(long number,
                                         std::initializer_list<std::uint64_t> arguments,
                                         const rig::Deadline& deadline) {
    user_regs_struct registers = registers_;
    const auto argument = [&](std::size_t i) {
        return i < arguments.size() ? arguments.begin()[i] : 0;
    };
    registers.rip = callInstruction_;
    registers.rax = static_cast<std::uint64_t>(number);
    registers.orig_rax = ~0ULL;  // it is in no call that would have to be begun again
    registers.rdi = argument(0);
    registers.rsi = argument(1);
    registers.rdx = argument(2);
    registers.r10 = argument(3);
    registers.r8 = argument(4);
    registers.r9 = argument(5);
    ptrace(PTRACE_SETREGS, thread_, nullptr, &registers);
    while (registers.rip == callInstruction_) {  // a signal, too, stops it
        ptrace(PTRACE_SINGLESTEP, thread_, nullptr, nullptr);
        if (!waitForStop(deadline)) {
            thread_ = -1;
            return std::nullopt;
        }
        ptrace(PTRACE_GETREGS, thread_, nullptr, &registers);
    }
    return static_cast<std::int64_t>(registers.rax);
}

std::uint64_t Tracee::put(const std::string& text) {
    constexpr std::uint64_t kBelowTheStack = 1024;
    const std::uint64_t address = registers_.rsp - kBelowTheStack;
    const ssize_t length = pwrite(openMemory(thread_).get(), text.c_str(), text.size() + 1,
                                  static_cast<off_t>(address));
    return length > 0 ? address : 0;
}

}  // namespace skavlo
