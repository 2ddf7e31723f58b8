#include "tools/demo_session.h"

#include <algorithm>
#include <filesystem>
#include <fstream>

#include "tools/demo_desktop.h"
#include "tools/picture/png.h"
#include "tools/rig/overlay_window.h"
#include "tools/rig/screenshot.h"

namespace skavlo {

namespace {

using std::chrono::milliseconds;
using std::chrono::nanoseconds;

constexpr milliseconds kOverlayStartTime(15'000);
constexpr milliseconds kFrameInterval(50);
constexpr milliseconds kLead(250);  // the empty screen, before the first touch
constexpr milliseconds kTail(900);  // until the last trail has faded
constexpr milliseconds kIntoDown(120);
constexpr milliseconds kIntoLift(180);

nanoseconds timeOf(const TouchRecording& recording, std::size_t frame) {
    return nanoseconds(recording.frames.at(frame).time);
}

bool hasPhase(const RecordedFrame& frame, TouchPhase phase) {
    return std::any_of(frame.touches.begin(), frame.touches.end(),
                       [&](const RecordedTouch& touch) { return touch.phase == phase; });
}

// The overlay removes its process-id file only when it ends by itself; a file that names another
// process is none of our business.
void removePidFile(pid_t pid) {
    std::ifstream file(SKAVLO_PID_FILE);
    pid_t named = 0;
    if (file >> named && named == pid) {
        std::error_code ignored;
        std::filesystem::remove(SKAVLO_PID_FILE, ignored);
    }
}

}  // namespace

std::vector<DemoMoment> momentsOf(const TouchRecording& recording) {
    const auto& frames = recording.frames;
    if (frames.empty()) {
        return {};
    }
    const nanoseconds first = timeOf(recording, 0);
    const nanoseconds last = timeOf(recording, frames.size() - 1);
    const auto lastDown = std::find_if(frames.rbegin(), frames.rend(), [](const auto& frame) {
        return hasPhase(frame, TouchPhase::kDown);
    });
    const nanoseconds allDown = lastDown == frames.rend() ? first : nanoseconds(lastDown->time);
    return {{"1-touch-down", first + kIntoDown},
            {"2-mid-drag", allDown + (last - allDown) * 11 / 20},
            {"3-mid-lift", last + kIntoLift},
            {"4-after", last + kTail}};
}

Result<std::unique_ptr<DemoSession>> DemoSession::start(const std::string& overlay,
                                                        PixelSize screen, int stop) {
    auto server = rig::XServer::start({.sizes = {screen}});
    if (!server) {
        return server.error();
    }
    auto display = server->connect();
    if (!display) {
        return display.error();
    }
    if (!showDesktop(*display, drawDesktop(screen))) {
        return Error{"the X server refuses the desktop's picture"};
    }
    auto compositor = rig::Compositor::start(*server);
    if (!compositor) {
        return compositor.error();
    }
    std::unique_ptr<DemoSession> session(
        new DemoSession(std::move(*server), std::move(*compositor), std::move(*display), stop));
    if (const auto error = session->startOverlay(overlay)) {
        return *error;
    }
    return session;
}

DemoSession::~DemoSession() {
    if (overlay_) {
        const pid_t pid = overlay_->pid();
        overlay_->stop();
        removePidFile(pid);
    }
}

std::optional<Error> DemoSession::startOverlay(const std::string& program) {
    auto environment = server_.environment();
    environment.emplace_back("WAYLAND_DISPLAY");  // the user's own screen is not meant
    auto overlay = rig::Child::start({{program, "-hud"}, environment, {}, -1});
    if (!overlay) {
        return overlay.error();
    }
    overlay_ = std::move(*overlay);
    const rig::Deadline deadline(kOverlayStartTime);
    if (waitForOverlayWindow(display_, deadline, {stop_, overlay_->endDescriptor()})) {
        return std::nullopt;
    }
    if (rig::waitReadable({stop_}, rig::Deadline(milliseconds(0)))) {
        return Error{"stopped"};
    }
    const auto status = overlay_->wait(rig::Deadline(milliseconds(0)));
    return Error{"the overlay did not come up: " + program + " -hud " +
                 (status ? rig::describeStatus(*status)
                         : "showed no window within " +
                               std::to_string(kOverlayStartTime.count() / 1000) + " s")};
}

std::optional<Error> DemoSession::play(const TouchRecording& recording) {
    moments_ = momentsOf(recording);
    nextFrame_ = std::chrono::steady_clock::now();
    begin_ = nextFrame_ + kLead;
    for (const RecordedFrame& frame : recording.frames) {
        if (auto error = captureUntil(begin_ + nanoseconds(frame.time))) {
            return error;
        }
        if (!touch(frame, recording.screen)) {
            return Error{"the X server's touch device is gone"};
        }
    }
    const auto last = moments_.empty() ? begin_ : begin_ + moments_.back().time;
    return captureUntil(last + kFrameInterval);
}

std::optional<Error> DemoSession::waitUntil(Time time) {
    const auto ready = rig::waitReadable({stop_, overlay_->endDescriptor()}, rig::Deadline(time));
    if (!ready) {
        return std::nullopt;
    }
    return Error{*ready == stop_ ? "stopped" : "the overlay ended"};
}

// The next picture to take may be one of the moments or one of the animation's frames.
std::optional<Error> DemoSession::captureUntil(Time time) {
    while (true) {
        const bool moment = !moments_.empty() && begin_ + moments_.front().time < nextFrame_;
        const Time next = moment ? begin_ + moments_.front().time : nextFrame_;
        if (auto error = waitUntil(std::min(next, time))) {
            return error;
        }
        if (next >= time) {
            return std::nullopt;
        }
        if (!moment) {
            if (auto error = captureFrame()) {
                return error;
            }
            continue;
        }
        auto bitmap = rig::captureRoot(display_);
        if (!bitmap) {
            return bitmap.error();
        }
        pictures_.push_back({moments_.front().name, std::move(*bitmap)});
        moments_.erase(moments_.begin());
    }
}

std::optional<Error> DemoSession::captureFrame() {
    auto bitmap = rig::captureRoot(display_);
    if (!bitmap) {
        return bitmap.error();
    }
    animation_.add(*bitmap, static_cast<std::uint16_t>(kFrameInterval.count()));
    nextFrame_ += kFrameInterval;
    return std::nullopt;
}

bool DemoSession::touch(const RecordedFrame& frame, Size recordedScreen) {
    const PixelSize screen = display_.rootSize();
    rig::TouchDevice& device = *server_.touch();
    for (const RecordedTouch& touch : frame.touches) {
        const auto contact = static_cast<unsigned>(touch.contact);
        const Point pixel{touch.point.x * screen.width / recordedScreen.width,
                          touch.point.y * screen.height / recordedScreen.height};
        const bool sent = touch.phase == TouchPhase::kDown   ? device.begin(contact, pixel)
                          : touch.phase == TouchPhase::kMove ? device.update(contact, pixel)
                                                             : device.end(contact);
        if (!sent) {
            return false;
        }
    }
    return true;
}

Result<std::vector<std::string>> DemoSession::writePictures(const std::string& directory) const {
    std::error_code failure;
    std::filesystem::create_directories(directory, failure);
    if (failure) {
        return Error{"cannot make " + directory + ": " + failure.message()};
    }
    std::vector<std::string> files;
    for (const Picture& picture : pictures_) {
        files.push_back(directory + "/" + picture.name + ".png");
        if (const auto error = writePng(files.back(), picture.bitmap)) {
            return *error;
        }
    }
    files.push_back(directory + "/two-hands.png");
    if (const auto error = animation_.write(files.back())) {
        return *error;
    }
    return files;
}

}  // namespace skavlo
