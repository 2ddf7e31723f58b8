// A process that is made to call the system as if its code did, on x86-64.
#pragma once

#include <sys/types.h>
#include <sys/user.h>

#include <cstdint>
#include <initializer_list>
#include <optional>
#include <string>

#include "platform/result.h"
#include "tools/rig/wait.h"

namespace skavlo {

// One thread, which stands still from the start to the destructor and then goes on where it was.
class Tracee {
  public:
    // An error where this process may not trace that one.
    static Result<Tracee> stop(pid_t thread, const rig::Deadline& deadline);
    Tracee(Tracee&& other) noexcept;
    Tracee& operator=(Tracee&&) = delete;
    ~Tracee();

    // What the call returned, -errno included; none: it ended the process, whose status is left to
    // whoever waits for it, or the deadline passed.
    std::optional<std::int64_t> call(long number, std::initializer_list<std::uint64_t> arguments,
                                     const rig::Deadline& deadline);
    // Puts the text where the thread keeps nothing, until the next one: its address.
    std::uint64_t put(const std::string& text);

  private:
    explicit Tracee(pid_t thread) : thread_(thread) {}
    // Until it stands still; false: it has ended, or the deadline passed.
    [[nodiscard]] bool waitForStop(const rig::Deadline& deadline) const;

    pid_t thread_;  // -1: moved away, or no more
    user_regs_struct registers_{};
    std::uint64_t callInstruction_ = 0;
};

}  // namespace skavlo
