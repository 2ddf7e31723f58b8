#include "tools/replay/replay.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <optional>

#include "tools/picture/animated_png.h"
#include "tools/replay/contact_check.h"
#include "tools/replay/frame_directory.h"
#include "tools/replay/player.h"

namespace skavlo {

namespace {

constexpr double kLargestSide = 16384;
constexpr double kMostPixels = 64 << 20;
constexpr MachTime kLongestRest = 60 * kNanosecondsPerSecond;

// As compilers do, so that editors find the place.
int refuse(const std::string& fileAndMessage) {
    std::fprintf(stderr, "%s\n", fileAndMessage.c_str());
    return kReplayBadInput;
}

void warn(const std::string& file, const std::string& message) {
    std::fprintf(stderr, "%s: warning: %s\n", file.c_str(), message.c_str());
}

// In front of a colour; without one as it is.
void layOver(std::optional<std::uint32_t> colour, Bitmap& bitmap) {
    if (!colour) return;
    for (std::uint32_t& pixel : bitmap.pixels) {
        const std::uint32_t rest = 255 - (pixel >> 24);
        std::uint32_t sum = 0xFF000000U;
        for (const int shift : {16, 8, 0}) {
            const std::uint32_t below = ((*colour >> shift & 0xFF) * rest + 127) / 255;
            sum |= std::min<std::uint32_t>((pixel >> shift & 0xFF) + below, 255) << shift;
        }
        pixel = sum;
    }
}

// Plays a recording forward to one time after the other.
class Playback {
  public:
    Playback(const ReplayOptions& options, const TouchRecording& recording, Player& player)
        : options_(options), recording_(recording), player_(player) {}

    Bitmap show(MachTime time) {
        const auto& frames = recording_.frames;
        for (; next_ < frames.size() && frames[next_].time <= time; ++next_) {
            player_.touch(frames[next_], recording_.screen);
        }
        Bitmap bitmap = player_.show(time);
        layOver(options_.background, bitmap);
        return bitmap;
    }
    // The end, or a time before it when that depends on what moves.
    [[nodiscard]] MachTime leastEnd() const {
        const MachTime last = recording_.frames.empty() ? 0 : recording_.frames.back().time;
        return last + options_.tail.value_or(0);
    }
    // Whether what was shown at `time` is the end, or the next frame would be beyond it.
    [[nodiscard]] bool endedAt(MachTime time, MachTime next) const {
        if (options_.tail) return next > leastEnd();
        return time >= leastEnd() && (!player_.moving() || time >= leastEnd() + kLongestRest);
    }

  private:
    const ReplayOptions& options_;
    const TouchRecording& recording_;
    Player& player_;
    std::size_t next_ = 0;
};

Transparency transparencyOf(const ReplayOptions& options) {
    return options.background ? Transparency::none : Transparency::kept;
}

// Frame by frame into a directory and an animation, as far as they are wished.
class Filming {
  public:
    Filming(const ReplayOptions& options, Playback playback)
        : options_(options),
          playback_(playback),
          animation_({transparencyOf(options), static_cast<std::uint16_t>(options.fps), true}) {}

    int run(const volatile std::sig_atomic_t& stopped) {
        if (playback_.leastEnd() > timeOf(FrameDirectory::kMostFrames)) return refuseLength();
        if (!options_.frames.empty()) {
            auto directory = FrameDirectory::open(options_.frames, transparencyOf(options_));
            if (!directory) return replayFails(kReplayFailed, directory.error().message);
            directory_.emplace(std::move(*directory));
        }
        for (std::size_t frame = 0; frame < FrameDirectory::kMostFrames; ++frame) {
            if (stopped != 0) return kReplayFailed;
            const MachTime time = timeOf(frame);
            if (const auto error = add(playback_.show(time))) {
                return replayFails(kReplayFailed, error->message);
            }
            if (playback_.endedAt(time, timeOf(frame + 1))) return finish();
        }
        return refuseLength();
    }

  private:
    [[nodiscard]] MachTime timeOf(std::size_t frame) const {
        return frame * kNanosecondsPerSecond / static_cast<MachTime>(options_.fps);
    }
    [[nodiscard]] int refuseLength() const {
        return refuse(options_.recording +
                      ": more than 99999 frames; a lower --fps or --tail makes it fewer");
    }
    std::optional<Error> add(const Bitmap& bitmap) {
        if (!options_.animation.empty()) animation_.add(bitmap, 1);
        return directory_ ? directory_->add(bitmap) : std::nullopt;
    }
    int finish() {
        if (!options_.animation.empty()) {
            if (const auto error = animation_.write(options_.animation)) {
                return replayFails(kReplayFailed, error->message);
            }
        }
        if (directory_) directory_->keep();
        return 0;
    }

    const ReplayOptions& options_;
    Playback playback_;
    AnimatedPng animation_;
    std::optional<FrameDirectory> directory_;
};

Result<PixelSize> pixelSize(const ReplayOptions& options, const TouchRecording& recording) {
    const Size points = options.size.value_or(recording.screen);
    const double width = std::max(1.0, std::round(points.width * options.scale));
    const double height = std::max(1.0, std::round(points.height * options.scale));
    if (width > kLargestSide || height > kLargestSide || width * height > kMostPixels) {
        return Error{options.recording +
                     ": the picture has sides above 16384 or more than 67108864 pixels; "
                     "--size or --scale makes it smaller"};
    }
    return PixelSize{static_cast<int>(width), static_cast<int>(height)};
}

}  // namespace

int replayFails(int status, const std::string& message) {
    std::fprintf(stderr, "skavlo-replay: %s\n", message.c_str());
    return status;
}

int replay(const ReplayOptions& options, const std::string& rasterProgram,
           const volatile std::sig_atomic_t& stopped) {
    auto recording = readRecording(options.recording);
    if (!recording) return refuse(recording.error().message);
    auto pixels = pixelSize(options, *recording);
    if (!pixels) return refuse(pixels.error().message);
    std::optional<std::string> settings;
    if (!options.settings.empty()) {
        settings = PosixFiles().read(options.settings);
        if (!settings) return refuse(options.settings + ": cannot be read");
    }
    for (const std::string& oddity : contactOddities(*recording)) warn(options.recording, oddity);

    Player player({*pixels, options.scale, settings, rasterProgram});
    for (const std::string& warning : player.warnings()) {
        warn(options.settings.empty() ? "the default settings" : options.settings, warning);
    }
    Playback playback(options, *recording, player);
    if (!options.at) return Filming(options, playback).run(stopped);
    const Bitmap picture = playback.show(*options.at);
    if (const auto error = writePng(options.output, picture, transparencyOf(options))) {
        return replayFails(kReplayFailed, error->message);
    }
    return 0;
}

}  // namespace skavlo
