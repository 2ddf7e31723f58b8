// The product at work on a private screen: the settings application worked by mouse, the overlay by
// recorded touches; pictures come out.
#pragma once

#include <chrono>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "tools/picture/animated_png.h"
#include "tools/recording/recording.h"
#include "tools/rig/compositor.h"
#include "tools/rig/settings_application.h"
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
    // Starts server, compositing manager and settings application, and switches the overlay on
    // there. Ends early when `stop` becomes readable.
    static Result<std::unique_ptr<DemoSession>> start(const std::string& program, PixelSize screen,
                                                      int stop);

    DemoSession(const DemoSession&) = delete;
    DemoSession& operator=(const DemoSession&) = delete;
    ~DemoSession();

    // Plays in real time and keeps what the screen shows. None: done.
    std::optional<Error> play(const TouchRecording& recording);
    // Drags a slider and touches once more, to show what has changed. None: done.
    std::optional<Error> changeLook();
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

    std::optional<Error> openSettings(const std::string& program);
    std::optional<Error> switchOverlayOn();
    std::optional<Error> takePicture(const std::string& name);
    std::optional<Error> waitUntil(Time time);
    std::optional<Error> captureUntil(Time time);
    std::optional<Error> captureFrame();
    bool touch(const RecordedFrame& frame, Size recordedScreen);

    rig::XServer server_;
    rig::Compositor compositor_;
    rig::Display display_;
    int stop_;
    std::optional<std::string> settingsBefore_;  // the file's contents; none: there was none
    std::optional<rig::SettingsApplication> settings_;
    std::optional<pid_t> overlay_;
    rig::FileDescriptor overlayEnd_;   // readable once the overlay has ended
    std::vector<DemoMoment> moments_;  // those still to come
    Time begin_;
    Time nextFrame_;
    std::vector<Picture> pictures_;
    AnimatedPng animation_;
};

}  // namespace skavlo
