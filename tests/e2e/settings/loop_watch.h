// What a program that runs under the watch tells of its main thread.
#pragma once

#include <atomic>
#include <cstdint>

namespace skavlo {

// Names the file that holds a LoopReport and is shared between watcher and watched.
inline constexpr const char* kLoopWatchVariable = "SKAVLO_LOOP_WATCH";

struct LoopReport {
    // The longest time that the main thread was away from its loop since the watcher last set this
    // to 0. What it spent ready to run and waiting for a processor does not count.
    std::atomic<std::int64_t> longestNanoseconds;
    // How often it came back to its loop.
    std::atomic<std::int64_t> turns;
};
static_assert(std::atomic<std::int64_t>::is_always_lock_free);

}  // namespace skavlo
