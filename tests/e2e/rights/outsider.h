// Other users, for tests that run as root.
#pragma once

#include <sys/types.h>

#include <functional>
#include <optional>
#include <string>

namespace skavlo {

inline constexpr uid_t kOrdinaryUser = 54321;  // has no account
inline constexpr gid_t kMobile = 501;

struct Identity {
    uid_t user = kOrdinaryUser;
    gid_t group = kOrdinaryUser;
};

struct Outcome {
    int status = -1;  // of waitpid()
    std::string said;
    pid_t pid = -1;
};

// Whether this process may take the identities of others, as root of all users.
bool canBecomeOthers();

// Forks, takes the identity (no supplementary groups), runs `deed` and leaves with what it returns.
// Everything it writes to standard output or error is in `said`. Fails the test when it has not
// ended after a generous time.
Outcome runAs(const std::optional<Identity>& identity, const std::function<int()>& deed);

}  // namespace skavlo
