#pragma once

#include <sys/types.h>

#include <string>

namespace skavlo::test {

// Whether the process has the device open and waits for its events, as libinput does once the
// device is ready for use.
bool readsDevice(pid_t process, const std::string& node);

}  // namespace skavlo::test
