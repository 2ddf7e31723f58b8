#include "app/linux_overlay_system.h"

#include <csignal>
#include <cstdio>
#include <utility>

#include "overlay/overlay_app_delegate.h"
#include "platform/linux/capture/capture_sources.h"
#include "platform/linux/capture/mirror_source.h"
#include "platform/linux/confine/confinement.h"
#include "platform/linux/window_servers/touches.h"
#include "platform/linux/x11/connect_to_x.h"

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
    auto server = openWindowServer(runLoop_);
    if (!server) {
        std::fprintf(stderr, "skavlo: %s\n", server.error().message.c_str());
        return false;
    }
    windowServer_ = std::move(server->server);
    windowServerKind_ = server->kind;
    windowServer_->setLostHandler([this] { end(1); });
    watchCapture();
    return true;
}

void LinuxOverlaySystem::watchCapture() {
    const auto layout = [this] { return windowServer_->layout(); };
    auto mirror = std::make_unique<MirrorSource>(layout);
    windowServer_->addLayoutHandler([source = mirror.get()] { source->layoutChanged(); });
    captureState_.add(std::move(mirror));
    addCaptureSources(captureState_, runLoop_,
                      {.connectX = [] { return connectToX(nullptr); }, .layout = layout});
}

void LinuxOverlaySystem::setNewDelegate() {
    g_skv_overlayAppDelegate = std::make_unique<OverlayAppDelegate>(
        OverlayServices{runLoop_, clock_, files_, propertyLists_, notifications_,
                        windowServer_->screen(), captureState_, rasterizer_, directory_},
        *windowServer_);
}

HidEventSystemClient* LinuxOverlaySystem::IOHIDEventSystemClientCreate() {
    input_ = touchesOf(runLoop_, *windowServer_, windowServerKind_);
    shownLayout_ = windowServer_->layout();
    windowServer_->addLayoutHandler([this] { layoutChanged(); });
    runLoop_.async([this] { sayWithoutInput(); });
    return input_.get();
}

// Markers and trails would lie at the same points of another screen, under no finger.
void LinuxOverlaySystem::layoutChanged() {
    const bool same = sameMainScreen(shownLayout_, windowServer_->layout());
    shownLayout_ = windowServer_->layout();
    if (same || !g_skv_overlayAppDelegate || !g_skv_overlayAppDelegate->canvasVC) return;
    g_skv_overlayAppDelegate->canvasVC->skv_forceClearAllGarbage();
}

// One that is plugged in later is read all the same.
void LinuxOverlaySystem::sayWithoutInput() const {
    if (input_->source() != InputSourceKind::none) return;
    std::fputs(windowServerKind_ == WindowServerKind::wayland
                   ? "skavlo: no touchscreen can be read; on Wayland that takes the rights to "
                     "/dev/input\n"
                   : "skavlo: no touchscreen and no pointer can be read\n",
               stderr);
}

std::optional<int> LinuxOverlaySystem::operatingSystemMajorVersion() const {
    return kMajorVersion;
}

void LinuxOverlaySystem::completeAndRunAsPlugin() {
    g_skv_overlayAppDelegate->applicationDidFinishLaunchingWithOptions();
}

int LinuxOverlaySystem::CFRunLoopRun() {
    if (const auto error = giveUpRights()) {
        std::fprintf(stderr, "skavlo: %s\n", error->message.c_str());
        end(1);
    }
    return runLoop_.run();
}

void LinuxOverlaySystem::exit(int status) {
    runLoop_.stop(status);
}

}  // namespace skavlo
