#include "tools/recording/recording.h"

#include <sys/stat.h>

#include <cmath>
#include <fstream>
#include <optional>

#include "tools/recording/evemu.h"
#include "tools/recording/lines.h"

namespace skavlo {

namespace {

constexpr std::uintmax_t kLargestFile = 64U << 20;
constexpr double kLongestMilliseconds = 1e12;  // keeps the times within their type
constexpr double kNanosecondsPerMillisecond = 1e6;

constexpr const char* kExpectedScreen = "expected: screen WIDTH HEIGHT, both above 0";
constexpr const char* kExpectedEvent = "expected: MILLISECONDS CONTACT X Y down|move|up";

using Words = std::vector<std::string_view>;

std::optional<Size> readScreen(const Words& parts) {
    if (parts.size() != 3 || parts[0] != "screen") {
        return std::nullopt;
    }
    const auto width = finiteNumber(parts[1]);
    const auto height = finiteNumber(parts[2]);
    return width && height && *width > 0 && *height > 0 ? std::optional(Size{*width, *height})
                                                        : std::nullopt;
}

std::optional<TouchPhase> readPhase(std::string_view word) {
    if (word == "down") {
        return TouchPhase::kDown;
    }
    if (word == "move") {
        return TouchPhase::kMove;
    }
    return word == "up" ? std::optional(TouchPhase::kUp) : std::nullopt;
}

struct TimedTouch {
    MachTime time;
    RecordedTouch touch;
};

std::optional<TimedTouch> readTouch(const Words& parts) {
    if (parts.size() != 5) {
        return std::nullopt;
    }
    const auto milliseconds = finiteNumber(parts[0]);
    const auto contact = integerNumber(parts[1]);
    const auto x = finiteNumber(parts[2]);
    const auto y = finiteNumber(parts[3]);
    const auto phase = readPhase(parts[4]);
    if (!milliseconds || *milliseconds < 0 || *milliseconds > kLongestMilliseconds || !contact ||
        *contact < 0 || !x || !y || !phase) {
        return std::nullopt;
    }
    const auto time =
        static_cast<MachTime>(std::llround(*milliseconds * kNanosecondsPerMillisecond));
    return TimedTouch{time, {*contact, {*x, *y}, *phase}};
}

// What is wrong with the line; null: nothing.
const char* addTouch(const Words& parts, TouchRecording& recording) {
    const auto timed = readTouch(parts);
    if (!timed) {
        return kExpectedEvent;
    }
    auto& frames = recording.frames;
    if (!frames.empty() && timed->time < frames.back().time) {
        return "time goes back";
    }
    if (frames.empty() || timed->time > frames.back().time) {
        frames.push_back({timed->time, {}});
    }
    frames.back().touches.push_back(timed->touch);
    return nullptr;
}

Result<TouchRecording> parseOwnRecording(std::string_view text, const std::string& name) {
    TouchRecording recording;
    std::optional<Size> screen;
    int number = 0;
    while (!text.empty()) {
        ++number;
        const Words parts = words(takeLine(text));
        if (parts.empty()) {
            continue;
        }
        const char* wrong = nullptr;
        if (screen) {
            wrong = addTouch(parts, recording);
        } else {
            screen = readScreen(parts);
            wrong = screen ? nullptr : kExpectedScreen;
        }
        if (wrong != nullptr) {
            return lineError(name, number, wrong);
        }
    }
    if (!screen) {
        return lineError(name, number, kExpectedScreen);
    }
    recording.screen = *screen;
    return recording;
}

}  // namespace

Result<TouchRecording> parseRecording(std::string_view text, const std::string& name) {
    return isEvemuRecording(text) ? parseEvemuRecording(text, name) : parseOwnRecording(text, name);
}

Result<TouchRecording> readRecording(const std::string& path) {
    struct stat information = {};
    if (stat(path.c_str(), &information) != 0 || !S_ISREG(information.st_mode)) {
        return Error{path + ": no such file"};
    }
    if (static_cast<std::uintmax_t>(information.st_size) > kLargestFile) {
        return Error{path + ": larger than 64 MiB"};
    }
    std::ifstream file(path, std::ios::binary);
    const std::string text((std::istreambuf_iterator<char>(file)), {});
    if (!file.is_open() || file.bad()) {
        return Error{path + ": cannot be read"};
    }
    return parseRecording(text, path);
}

}  // namespace skavlo
