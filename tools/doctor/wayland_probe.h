// What a Wayland compositor offers, and which program it is.
#pragma once

#include <optional>
#include <set>
#include <string>

namespace skavlo::doctor {

struct WaylandFacts {
    std::set<std::string> interfaces;
    std::string program;  // the compositor's file name; empty: cannot be told
};

// None: the environment names no compositor, or it does not answer.
std::optional<WaylandFacts> probeWayland();

}  // namespace skavlo::doctor
