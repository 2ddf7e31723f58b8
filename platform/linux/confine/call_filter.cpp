#include "platform/linux/confine/call_filter.h"

#include <errno.h>
#include <string.h>

#include <string>

namespace skavlo {

CallFilter::CallFilter(std::uint32_t otherwise) : context_(seccomp_init(otherwise)) {
    error_ = context_ ? seccomp_attr_set(context_.get(), SCMP_FLTATR_CTL_TSYNC, 1) : -ENOMEM;
}

void CallFilter::allow(std::initializer_list<int> calls) {
    for (const int call : calls) rule(SCMP_ACT_ALLOW, call, {});
}

void CallFilter::allow(int call, Conditions when) {
    rule(SCMP_ACT_ALLOW, call, when);
}

void CallFilter::deny(int error, std::initializer_list<int> calls) {
    for (const int call : calls) rule(SCMP_ACT_ERRNO(static_cast<unsigned>(error)), call, {});
}

void CallFilter::deny(int error, int call, Conditions when) {
    rule(SCMP_ACT_ERRNO(static_cast<unsigned>(error)), call, when);
}

void CallFilter::kill(std::initializer_list<int> calls) {
    for (const int call : calls) rule(SCMP_ACT_KILL_PROCESS, call, {});
}

void CallFilter::kill(int call, Conditions when) {
    rule(SCMP_ACT_KILL_PROCESS, call, when);
}

std::optional<Error> CallFilter::load() {
    if (error_ == 0) error_ = seccomp_load(context_.get());
    if (error_ == 0) return std::nullopt;
    return Error{std::string("seccomp: ") + strerror(-error_)};
}

void CallFilter::rule(std::uint32_t action, int call, Conditions when) {
    if (error_ != 0) return;
    error_ = seccomp_rule_add_array(context_.get(), action, call,
                                    static_cast<unsigned>(when.size()), when.begin());
}

}  // namespace skavlo
