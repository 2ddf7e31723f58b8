// A message bus of our own, so that programs under test meet neither the user's desktop nor each
// other's.
#pragma once

#include <string>
#include <vector>

#include "platform/result.h"
#include "tools/rig/child.h"

namespace skavlo::rig {

class SessionBus {
  public:
    // `environment` reaches the services that the bus starts: where the display is, for example.
    // `runner`: words before the command, as for running it as another user, who then alone may
    // use the bus.
    static Result<SessionBus> start(const std::vector<std::string>& environment,
                                    const std::vector<std::string>& runner = {});

    // What a client's environment needs, as NAME=VALUE.
    [[nodiscard]] std::string environment() const { return "DBUS_SESSION_BUS_ADDRESS=" + address_; }
    void enterEnvironment() const;

  private:
    SessionBus(Child process, std::string address)
        : process_(std::move(process)), address_(std::move(address)) {}

    Child process_;
    std::string address_;
};

}  // namespace skavlo::rig
