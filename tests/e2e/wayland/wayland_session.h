// A compositor that an unprivileged user runs, in a session directory of its own.
#pragma once

#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/result.h"
#include "tools/rig/child.h"
#include "tools/rig/session_bus.h"

namespace skavlo {

struct WaylandSessionOptions {
    // "@" stands for the session directory in each of these.
    std::vector<std::string> command;
    std::vector<std::string> environment = {};
    std::map<std::string, std::string> files = {};  // in the session directory, by name
    bool bus = false;                               // with a message bus
};

// "nobody", who runs it all.
inline constexpr unsigned kSessionUser = 65534;

// Why the program cannot run here; none: it can.
std::optional<std::string> whyNotRunnable(const std::string& program);

class WaylandSession {
  public:
    // Returns once the compositor takes clients.
    static Result<WaylandSession> start(const WaylandSessionOptions& options);

    // What a program needs to be a client, as root or as the session's user.
    [[nodiscard]] std::vector<std::string> environment() const;
    [[nodiscard]] std::string socket() const { return file(display_); }
    [[nodiscard]] std::string file(const std::string& name) const;
    // Waits until the file is there; false: the deadline passed.
    [[nodiscard]] bool waitForFile(const std::string& name, const rig::Deadline& deadline) const;
    // Waits until the file has contents; empty: the deadline passed.
    [[nodiscard]] std::string waitForContents(const std::string& name,
                                              const rig::Deadline& deadline) const;
    // Runs a program of the session's user to its end and returns its output; an error when it
    // fails.
    [[nodiscard]] Result<std::string> run(const std::vector<std::string>& arguments) const;
    // Starts one that goes on, which gets this descriptor under the same number; -1: none.
    [[nodiscard]] Result<rig::Child> start(const std::vector<std::string>& arguments,
                                           int inherited = -1) const;
    [[nodiscard]] rig::Child& compositor() { return *compositor_; }
    // Address of the message bus.
    [[nodiscard]] std::string busAddress() const;

  private:
    WaylandSession() = default;
    [[nodiscard]] std::string expand(std::string text) const;
    // Of what the session's user runs.
    [[nodiscard]] std::vector<std::string> userEnvironment() const;

    struct Remove {
        void operator()(std::string* path) const;
    };
    std::unique_ptr<std::string, Remove> directory_;
    std::string display_;
    std::optional<rig::SessionBus> bus_;
    std::optional<rig::Child> compositor_;
};

}  // namespace skavlo
