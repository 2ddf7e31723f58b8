#pragma once

#include <string>

#include "platform/linux/posix/unique_descriptor.h"

namespace skavlo {

// A connection to the socket at this path, which never waits; none: nobody listens there.
UniqueDescriptor connectToSocket(const std::string& path);

}  // namespace skavlo
