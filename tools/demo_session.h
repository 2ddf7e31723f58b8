// The overlay at work on a private screen: recorded touches in, pictures out.
#pragma once

#include <chrono>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "tools/picture/animated_png.h"
#include "tools/recording/recording.h"
#include "tools/rig/child.h"
#include "tools/rig/compositor.h"
#include "tools/rig/x_server.h"

namespace skavlo {

struct DemoMoment {
    std::string name;
    std::chrono::nanoseconds time;  // since the recording's beginning
};

// Touch-down, mid-drag, mid-lift and after, as the recording's own times say.
std::vector<DemoMoment> momentsOf(const TouchRecording& recording);

class DemoSession {
  public:
    // Starts server, compositing manager and overlay. Ends early when `stop` becomes readable.
    static Result<std::unique_ptr<DemoSession>> start(const std::string& overlay, PixelSize screen,
                                                      int stop);

    DemoSession(const DemoSession&) = delete;
    DemoSession& operator=(const DemoSession&) = delete;
    ~DemoSession();

    // Plays in real time and keeps what the screen shows. None: done.
    std::optional<Error> play(const TouchRecording& recording);
    // The files written, in the directory, which is made.
    Result<std::vector<std::string>> writePictures(const std::string& directory) const;

  private:
    using Time = std::chrono::steady_clock::time_point;

    struct Picture {
        std::string name;
        Bitmap bitmap;
    };

    DemoSession(rig::XServer server, rig::Compositor compositor, rig::Display display, int stop)
        : server_(std::move(server)),
          compositor_(std::move(compositor)),
          display_(std::move(display)),
          stop_(stop) {}

    std::optional<Error> startOverlay(const std::string& program);
    std::optional<Error> waitUntil(Time time);
    std::optional<Error> captureUntil(Time time);
    std::optional<Error> captureFrame();
    bool touch(const RecordedFrame& frame, Size recordedScreen);

    rig::XServer server_;
    rig::Compositor compositor_;
    rig::Display display_;
    int stop_;
    std::optional<rig::Child> overlay_;
    std::vector<DemoMoment> moments_;  // those still to come
    Time begin_;
    Time nextFrame_;
    std::vector<Picture> pictures_;
    AnimatedPng animation_;
};

}  // namespace skavlo
