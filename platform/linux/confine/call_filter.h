#pragma once

#include <seccomp.h>

#include <cstdint>
#include <initializer_list>
#include <memory>
#include <optional>

#include "platform/result.h"

namespace skavlo {

// A filter of system calls in the making. Rules are collected; the first one refused is remembered
// and told by load().
class CallFilter {
  public:
    using Conditions = std::initializer_list<scmp_arg_cmp>;

    // What becomes of a call that no rule is about: SCMP_ACT_ALLOW, SCMP_ACT_KILL_PROCESS ...
    explicit CallFilter(std::uint32_t otherwise);

    void allow(std::initializer_list<int> calls);
    void allow(int call, Conditions when);
    // The call fails with this errno.
    void deny(int error, std::initializer_list<int> calls);
    void deny(int error, int call, Conditions when);
    // The call ends the process by SIGSYS.
    void kill(std::initializer_list<int> calls);
    void kill(int call, Conditions when);

    // Puts it in force for every thread of the process, for what they start, and for good. The
    // process can gain no rights afterwards.
    [[nodiscard]] std::optional<Error> load();

  private:
    void rule(std::uint32_t action, int call, Conditions when);

    struct Release {
        void operator()(void* filter) const { seccomp_release(filter); }
    };
    std::unique_ptr<void, Release> context_;
    int error_ = 0;
};

}  // namespace skavlo
