// A compositing manager on a private X server, so that translucent windows blend.
#pragma once

#include <string>
#include <vector>

#include "platform/result.h"
#include "tools/rig/child.h"
#include "tools/rig/x_server.h"

namespace skavlo::rig {

// To be started after its server and ended before it.
class Compositor {
  public:
    // Returns once windows are composited: by picom, or by another program with more variables
    // (NAME=VALUE) for it.
    static Result<Compositor> start(const XServer& server);
    static Result<Compositor> start(const XServer& server, const std::vector<std::string>& command,
                                    const std::vector<std::string>& variables = {});

    [[nodiscard]] Child& process() { return process_; }

  private:
    explicit Compositor(Child process) : process_(std::move(process)) {}

    Child process_;
};

}  // namespace skavlo::rig
