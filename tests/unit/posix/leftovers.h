// What this process would have left behind.
#pragma once

#include <sys/wait.h>

#include <cerrno>
#include <cstddef>
#include <filesystem>

namespace skavlo {

inline std::size_t openDescriptors() {
    const std::filesystem::directory_iterator entries("/proc/self/fd");
    return static_cast<std::size_t>(std::distance(begin(entries), end(entries)));
}

// Running ones or zombies.
inline bool hasChildren() {
    return waitpid(-1, nullptr, WNOHANG | __WALL) >= 0 || errno != ECHILD;
}

}  // namespace skavlo
