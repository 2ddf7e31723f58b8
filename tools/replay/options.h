// The command line of skavlo-replay.
#pragma once

#include <optional>
#include <string>

#include "platform/geometry.h"
#include "platform/result.h"
#include "platform/time.h"

namespace skavlo {

struct ReplayOptions {
    enum class Task { replay, help, version };

    Task task = Task::replay;
    std::string recording;
    std::string settings;      // empty: the overlay's own defaults
    std::optional<Size> size;  // points; none: that of the recording's screen
    double scale = 1;          // pixels per point
    int fps = 60;
    std::optional<MachTime> tail;             // none: until nothing moves
    std::string frames;                       // a directory; empty: none
    std::string animation;                    // a file; empty: none
    std::optional<MachTime> at;               // since the recording's beginning
    std::string output;                       // of the picture at that time
    std::optional<std::uint32_t> background;  // 0xRRGGBB; none: transparent
};

// The error says what is wrong with the arguments; without a recording and something to make of it
// there is nothing to do.
Result<ReplayOptions> parseReplayOptions(int count, char** values);

extern const char* const kReplayHelp;

}  // namespace skavlo
