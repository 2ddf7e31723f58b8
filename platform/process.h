#pragma once

namespace skavlo {

// Calls on processes, with the meaning and results of the system calls of these names.
class Process {
  public:
    virtual ~Process() = default;
    virtual int kill(int pid, int signal) = 0;
    [[nodiscard]] virtual int getpid() const = 0;
    // Nice value of the own process, -20 (highest priority) to 19.
    virtual void setpriority(int nice) = 0;
    // Protects the own process from being killed for memory; the limit is in megabytes.
    virtual void memorystatus_control(int command, int pid, unsigned limitMegabytes) = 0;
};

}  // namespace skavlo
