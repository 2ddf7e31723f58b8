// The overlay or a peer of it on a private X server, for measuring.
#pragma once

#include <cstdio>
#include <cstdlib>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "platform/result.h"
#include "tools/rig/child.h"
#include "tools/rig/compositor.h"
#include "tools/rig/display.h"
#include "tools/rig/x_server.h"

namespace skavlo::bench {

inline constexpr PixelSize kScreen{1920, 1080};

// A benchmark without its rig has nothing to say.
template <typename T>
T orDie(Result<T> result) {
    if (result) return std::move(*result);
    std::fprintf(stderr, "%s\n", result.error().message.c_str());
    std::exit(1);
}

inline rig::XServer startServer() {
    return orDie(rig::XServer::start({.sizes = {kScreen}}));
}

inline rig::Child startProgram(const rig::XServer& server,
                               const std::vector<std::string>& arguments) {
    auto environment = server.environment();
    environment.emplace_back("WAYLAND_DISPLAY");
    return orDie(rig::Child::start({arguments, environment, {}, -1}));
}

}  // namespace skavlo::bench
