#pragma once

#include <optional>

namespace skavlo {

// Qt ends the process when it finds no display, so ask first. The name of Qt's platform to use, or
// none when neither an X server nor a Wayland compositor can be reached. A platform that the
// environment names is taken as it is.
std::optional<const char*> reachablePlatform();

}  // namespace skavlo
