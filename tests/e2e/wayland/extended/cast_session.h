// Casts of a session's screen through a PipeWire server of its own.
#pragma once

#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "platform/geometry.h"
#include "platform/result.h"
#include "tests/e2e/wayland/wayland_session.h"
#include "tools/rig/child.h"
#include "tools/rig/wait.h"

namespace skavlo {

class CastSession {
  public:
    // Starts the server, and the manager that links who receives with who sends. Returns once the
    // server takes clients.
    static Result<CastSession> start(WaylandSession& session, const rig::Deadline& deadline);

    // Has the compositor offer its screen until the process ends: `program` asks it to, prints the
    // node's number on a line and holds the cast.
    struct Cast {
        rig::Child process;
        std::string node;
    };
    Result<Cast> offer(const std::string& program, const rig::Deadline& deadline);
    // Receives the pictures of a node, as a recorder does.
    Result<rig::Child> receive(const std::string& node);

    // Receives them and tells what colours they have somewhere.
    class Viewer {
      public:
        Viewer(rig::Child process, rig::FileDescriptor lines)
            : process_(std::move(process)), lines_(std::move(lines)) {}
        // A line as the peer prints it; none: it came not before the deadline.
        std::optional<std::string> nextLine(const rig::Deadline& deadline);

      private:
        rig::Child process_;
        rig::FileDescriptor lines_;
        std::string begun_;
    };
    Result<Viewer> look(const std::string& node, const std::vector<PixelPoint>& places);

  private:
    explicit CastSession(WaylandSession& session) : session_(&session) {}
    // Of a copy, for the session's user may not see where it was built.
    [[nodiscard]] std::string copyOf(const std::string& program) const;

    WaylandSession* session_;
    std::vector<rig::Child> servers_;
};

}  // namespace skavlo
