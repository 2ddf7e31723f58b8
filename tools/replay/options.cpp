#include "tools/replay/options.h"

#include <getopt.h>

#include <charconv>
#include <cmath>
#include <cstdint>
#include <string_view>

#include "tools/recording/lines.h"

namespace skavlo {

const char* const kReplayHelp =
    "Usage: skavlo-replay [OPTION]... RECORDING\n"
    "Draw recorded touches as the overlay shows them, into pictures.\n\n"
    "  --frames DIRECTORY   one PNG per frame: frame-00001.png, frame-00002.png, ...\n"
    "  --animation FILE     one animated PNG\n"
    "  --at MS --output FILE\n"
    "                       one PNG of what is seen MS milliseconds after the beginning\n\n"
    "  --settings FILE      the look: a settings file of the overlay (default: its defaults)\n"
    "  --size WxH           the screen in points, over which the recording's screen is\n"
    "                       stretched (default: the recording's screen)\n"
    "  --scale N            pixels per point (default: 1)\n"
    "  --fps N              frames per second, 1 to 1000 (default: 60)\n"
    "  --tail SECONDS       how long to go on after the last touch (default: until nothing\n"
    "                       moves, at most a minute)\n"
    "  --background RRGGBB  an opaque colour behind it all (default: transparent)\n"
    "  --help, --version    print this text or the version\n\n"
    "The same files give the same bytes every time. Exit status: 0 when all is written, 1 when\n"
    "something cannot be written, 2 when the arguments or what they name are at fault.\n";

namespace {

constexpr double kLargestSide = 100'000;  // far above what can be drawn
constexpr double kLongestMilliseconds = 1e9;
constexpr double kLongestTailSeconds = 1e5;
constexpr double kNanosecondsPerMillisecond = 1e6;
constexpr int kHighestFps = 1000;

enum Option {
    kSettings = 256,  // above every letter

    kSize,
    kScale,
    kFps,
    kTail,
    kFrames,
    kAnimation,
    kAt,
    kOutput,
    kBackground,
    kHelp,
    kVersion
};

constexpr option kOptions[] = {{"settings", required_argument, nullptr, kSettings},
                               {"size", required_argument, nullptr, kSize},
                               {"scale", required_argument, nullptr, kScale},
                               {"fps", required_argument, nullptr, kFps},
                               {"tail", required_argument, nullptr, kTail},
                               {"frames", required_argument, nullptr, kFrames},
                               {"animation", required_argument, nullptr, kAnimation},
                               {"at", required_argument, nullptr, kAt},
                               {"output", required_argument, nullptr, kOutput},
                               {"background", required_argument, nullptr, kBackground},
                               {"help", no_argument, nullptr, kHelp},
                               {"version", no_argument, nullptr, kVersion},
                               {nullptr, 0, nullptr, 0}};

bool within(std::optional<double> number, double largest) {
    return number && *number >= 0 && *number <= largest;
}

// Each reader returns what it expected, or null when the text was that.
const char* readFile(std::string_view text, std::string& file) {
    file = text;
    return text.empty() ? "a name" : nullptr;
}

const char* readSize(std::string_view text, ReplayOptions& options) {
    const auto cross = std::min(text.find('x'), text.size());
    const auto width = finiteNumber(text.substr(0, cross));
    const auto height = finiteNumber(text.substr(std::min(cross + 1, text.size())));
    if (!within(width, kLargestSide) || !within(height, kLargestSide) || *width < 1 ||
        *height < 1) {
        return "WIDTHxHEIGHT, both from 1 to 100000";
    }
    options.size = Size{*width, *height};
    return nullptr;
}

const char* readScale(std::string_view text, ReplayOptions& options) {
    constexpr double kLargestScale = 100;
    const auto scale = finiteNumber(text);
    if (!within(scale, kLargestScale) || *scale < 1 / kLargestScale) {
        return "a number from 0.01 to 100";
    }
    options.scale = *scale;
    return nullptr;
}

const char* readFps(std::string_view text, ReplayOptions& options) {
    options.fps = integerNumber(text).value_or(0);
    return options.fps >= 1 && options.fps <= kHighestFps ? nullptr
                                                          : "a whole number from 1 to 1000";
}

const char* readTime(std::string_view text, double largest, double nanoseconds,
                     const char* expected, std::optional<MachTime>& time) {
    const auto number = finiteNumber(text);
    if (!within(number, largest)) return expected;
    time = static_cast<MachTime>(std::llround(*number * nanoseconds));
    return nullptr;
}

const char* readColour(std::string_view text, ReplayOptions& options) {
    constexpr std::size_t kDigits = 6;
    std::uint32_t colour = 0;
    const auto end = text.data() + text.size();
    const auto read = std::from_chars(text.data(), end, colour, 16);
    if (text.size() != kDigits || read.ec != std::errc() || read.ptr != end) {
        return "six hexadecimal digits RRGGBB";
    }
    options.background = colour;
    return nullptr;
}

const char* readValue(int name, std::string_view text, ReplayOptions& options) {
    switch (name) {
        case kSettings:
            return readFile(text, options.settings);
        case kFrames:
            return readFile(text, options.frames);
        case kAnimation:
            return readFile(text, options.animation);
        case kOutput:
            return readFile(text, options.output);
        case kSize:
            return readSize(text, options);
        case kScale:
            return readScale(text, options);
        case kFps:
            return readFps(text, options);
        case kTail:
            return readTime(text, kLongestTailSeconds, static_cast<double>(kNanosecondsPerSecond),
                            "seconds from 0 to 100000", options.tail);
        case kAt:
            return readTime(text, kLongestMilliseconds, kNanosecondsPerMillisecond,
                            "milliseconds from 0 to 1000000000", options.at);
        case kBackground:
            return readColour(text, options);
        default:
            return nullptr;
    }
}

// What does not go together; null: nothing.
const char* contradiction(const ReplayOptions& options) {
    const bool several = !options.frames.empty() || !options.animation.empty();
    if (options.at.has_value() == options.output.empty()) return "--at and --output go together";
    if (options.at && several) return "--at is one picture: neither --frames nor --animation";
    if (!options.at && !several) {
        return "nothing to make: give --frames, --animation or --at and --output";
    }
    return nullptr;
}

// The option that getopt_long() did not like. Of letters, which it has none of, several may stand
// behind one hyphen.
std::string refused(char** values) {
    const bool letter = optopt > 0 && optopt < kSettings;
    return letter ? std::string{'-', static_cast<char>(optopt)} : values[optind - 1];
}

}  // namespace

Result<ReplayOptions> parseReplayOptions(int count, char** values) {
    ReplayOptions options;
    opterr = 0;
    int place = 0;
    while (true) {
        const int name = getopt_long(count, values, ":", kOptions, &place);
        if (name == -1) break;
        if (name == '?') return Error{"no such option: " + refused(values)};
        if (name == ':') return Error{refused(values) + " needs a value"};
        if (name == kHelp || name == kVersion) {
            options.task = name == kHelp ? ReplayOptions::Task::help : ReplayOptions::Task::version;
            return options;
        }
        if (const char* expected = readValue(name, optarg, options)) {
            return Error{std::string("--") + kOptions[place].name + " " + optarg +
                         ": expected: " + expected};
        }
    }
    if (count - optind != 1) return Error{"expected: one recording"};
    options.recording = values[optind];
    if (const char* wrong = contradiction(options)) return Error{wrong};
    return options;
}

}  // namespace skavlo
