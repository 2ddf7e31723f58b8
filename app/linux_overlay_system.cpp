#include "app/linux_overlay_system.h"

#include <csignal>
#include <cstdio>
#include <utility>

#include "overlay/overlay_app_delegate.h"
#include "platform/linux/capture/capture_sources.h"
#include "platform/linux/capture/mirror_source.h"

namespace skavlo {

namespace {
// The system the overlay was conceived for counts its versions; this platform behaves as its 17.
constexpr int kMajorVersion = 17;
}  // namespace

LinuxOverlaySystem::LinuxOverlaySystem(SettingsDirectory directory, const std::string& runDirectory,
                                       const std::string& rasterProgram)
    : directory_(std::move(directory)),
      notifications_(runLoop_, runDirectory),
      rasterizer_(runLoop_, rasterProgram),
      signals_(runLoop_.context(), SIGTERM, SIGINT) {
    std::signal(SIGPIPE, SIG_IGN);
    signals_.async_wait([this](const asio::error_code& error, int /*signal*/) {
        if (!error) end(0);
    });
}

LinuxOverlaySystem::~LinuxOverlaySystem() {
    g_skv_overlayAppDelegate.reset();
}

// Ends as the exit notification does: the file goes, so that the probe tells the truth.
void LinuxOverlaySystem::end(int status) {
    files_.unlink(directory_.pidFile());
    exit(status);
}

bool LinuxOverlaySystem::UIScreen_initialize() {
    auto server = X11WindowServer::connect(runLoop_);
    if (!server) {
        std::fprintf(stderr, "skavlo: %s\n", server.error().message.c_str());
        return false;
    }
    windowServer_ = std::move(*server);
    windowServer_->setLostHandler([this] { end(1); });
    watchCapture();
    return true;
}

void LinuxOverlaySystem::watchCapture() {
    const auto layout = [this] { return windowServer_->outputs().layout(); };
    auto mirror = std::make_unique<MirrorSource>(layout);
    windowServer_->outputs().addChangeHandler([source = mirror.get()] { source->layoutChanged(); });
    captureState_.add(std::move(mirror));
    addCaptureSources(captureState_, runLoop_,
                      {.connectX = [] { return xcb_connect(nullptr, nullptr); },
                       .layout = layout,
                       .ownConnections = {windowServer_->connection()}});
}

void LinuxOverlaySystem::setNewDelegate() {
    g_skv_overlayAppDelegate = std::make_unique<OverlayAppDelegate>(
        OverlayServices{runLoop_, clock_, files_, propertyLists_, notifications_,
                        windowServer_->outputs(), captureState_, rasterizer_, directory_},
        *windowServer_);
}

HidEventSystemClient* LinuxOverlaySystem::IOHIDEventSystemClientCreate() {
    InputOptions options;
    options.layout = [this] { return windowServer_->outputs().layout(); };
    options.connectX = [] { return xcb_connect(nullptr, nullptr); };
    input_ = std::make_unique<InputSelector>(runLoop_.context(), std::move(options));
    windowServer_->outputs().addChangeHandler([this] { input_->layoutChanged(); });
    return input_.get();
}

std::optional<int> LinuxOverlaySystem::operatingSystemMajorVersion() const {
    return kMajorVersion;
}

void LinuxOverlaySystem::completeAndRunAsPlugin() {
    g_skv_overlayAppDelegate->applicationDidFinishLaunchingWithOptions();
}

int LinuxOverlaySystem::CFRunLoopRun() {
    return runLoop_.run();
}

void LinuxOverlaySystem::exit(int status) {
    runLoop_.stop(status);
}

}  // namespace skavlo
