#pragma once

#include "platform/process.h"

namespace skavlo {

class PosixProcess final : public Process {
  public:
    int kill(int pid, int signal) override;
    [[nodiscard]] int getpid() const override;
    void setpriority(int nice) override;
    // Linux has no such limit per process; the process is protected from the killer that acts when
    // memory runs out, which is what the call is for. Command and limit are not looked at.
    void memorystatus_control(int command, int pid, unsigned limitMegabytes) override;
};

}  // namespace skavlo
