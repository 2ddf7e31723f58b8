#include "tools/demo_session.h"

#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>

#include "tools/demo_desktop.h"
#include "tools/picture/png.h"
#include "tools/rig/overlay_window.h"
#include "tools/rig/screenshot.h"

namespace skavlo {

namespace {

using std::chrono::milliseconds;
using std::chrono::nanoseconds;

constexpr milliseconds kPatience(15'000);
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

std::optional<std::string> contents(const char* path) {
    std::ifstream file(path, std::ios::binary);
    if (!file) {
        return std::nullopt;
    }
    return std::string(std::istreambuf_iterator<char>(file), {});
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
    return {{"2-touch-down", first + kIntoDown},
            {"3-mid-drag", allDown + (last - allDown) * 11 / 20},
            {"4-mid-lift", last + kIntoLift},
            {"5-after", last + kTail}};
}

Result<std::unique_ptr<DemoSession>> DemoSession::start(const std::string& program,
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
    if (const auto error = session->openSettings(program)) {
        return *error;
    }
    if (const auto error = session->switchOverlayOn()) {
        return *error;
    }
    return session;
}

DemoSession::~DemoSession() {
    settings_.reset();
    if (overlay_) {
        kill(*overlay_, SIGTERM);
        rig::waitReadable({overlayEnd_.get()}, rig::Deadline(kPatience));
    }
    if (settingsBefore_) {
        std::ofstream(SKAVLO_SETTINGS_FILE, std::ios::binary) << *settingsBefore_;
    } else {
        std::error_code ignored;
        std::filesystem::remove(SKAVLO_SETTINGS_FILE, ignored);
    }
}

// With the default settings, whatever the file says.
std::optional<Error> DemoSession::openSettings(const std::string& program) {
    settingsBefore_ = contents(SKAVLO_SETTINGS_FILE);
    std::error_code ignored;
    std::filesystem::remove(SKAVLO_SETTINGS_FILE, ignored);
    auto settings = rig::SettingsApplication::start(server_, display_, program);
    if (!settings) {
        return settings.error();
    }
    settings_.emplace(std::move(*settings));
    return takePicture("1-settings");
}

std::optional<Error> DemoSession::switchOverlayOn() {
    const rig::Deadline deadline(kPatience);
    if (!settings_->click(rig::kSwitchRole, "开启 Skavlo", deadline)) {
        return Error{"the switch of the overlay cannot be clicked"};
    }
    if (!waitForOverlayWindow(display_, deadline, {stop_, settings_->process().endDescriptor()})) {
        return Error{"the overlay did not come up"};
    }
    overlay_ = std::atoi(contents(SKAVLO_PID_FILE).value_or("").c_str());
    overlayEnd_ = rig::FileDescriptor(static_cast<int>(syscall(SYS_pidfd_open, *overlay_, 0)));
    if (!overlayEnd_.valid()) {
        overlay_.reset();
        return Error{"the overlay is gone again"};
    }
    return std::nullopt;
}

std::optional<Error> DemoSession::changeLook() {
    constexpr unsigned kContact = 0;
    constexpr milliseconds kPoppedIn(400);
    constexpr double kShare = 0.9;
    if (!settings_->dragSlider("圆圈大小", kShare, rig::Deadline(kPatience))) {
        return Error{"the slider of the circle's size cannot be dragged"};
    }
    const PixelSize screen = display_.rootSize();
    const Point place{screen.width * 0.7, screen.height * 0.5};
    // The new size takes a moment to reach the overlay, which no client can see.
    if (auto error = captureUntil(nextFrame_ + kPoppedIn)) {
        return error;
    }
    server_.touch()->begin(kContact, place);
    if (auto error = captureUntil(nextFrame_ + kPoppedIn)) {
        return error;
    }
    if (auto error = takePicture("6-larger")) {
        return error;
    }
    server_.touch()->end(kContact);
    return captureUntil(nextFrame_ + kTail);
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
    const auto ready = rig::waitReadable({stop_, overlayEnd_.get()}, rig::Deadline(time));
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
        if (auto error = takePicture(moments_.front().name)) {
            return error;
        }
        moments_.erase(moments_.begin());
    }
}

std::optional<Error> DemoSession::takePicture(const std::string& name) {
    auto bitmap = rig::captureRoot(display_);
    if (!bitmap) {
        return bitmap.error();
    }
    pictures_.push_back({name, std::move(*bitmap)});
    return std::nullopt;
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
    files.push_back(directory + "/skavlo.png");
    if (const auto error = animation_.write(files.back())) {
        return *error;
    }
    return files;
}

}  // namespace skavlo
