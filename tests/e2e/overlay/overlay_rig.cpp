#include "tests/e2e/overlay/overlay_rig.h"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <filesystem>
#include <fstream>
#include <sstream>

#include "platform/linux/plist/plist_property_lists.h"
#include "tools/rig/overlay_window.h"
#include "tools/rig/screenshot.h"

namespace skavlo {

namespace {
const std::string kPrefix = SKAVLO_LIBRARY_PREFIX "Caches/com.oxbrel.skavlo";
}

Point centreOfMass(const Bitmap& screen) {
    double sum = 0;
    double x = 0;
    double y = 0;
    for (int row = 0; row < screen.size.height; ++row) {
        for (int column = 0; column < screen.size.width; ++column) {
            const double weight =
                (rig::pixelAt(screen, {column, row}) & 0xffU) - double{kBackground & 0xffU};
            sum += weight;
            x += weight * (column + 0.5);
            y += weight * (row + 0.5);
        }
    }
    return sum > 0 ? Point{x / sum, y / sum} : Point{-1, -1};
}

OverlayFiles::OverlayFiles() {
    std::filesystem::create_directories(SKAVLO_LIBRARY_PREFIX "Caches");
    std::filesystem::remove(pidFile());
    std::filesystem::remove(settingsFile());
}

OverlayFiles::~OverlayFiles() {
    std::filesystem::remove(pidFile());
    std::filesystem::remove(settingsFile());
}

std::string OverlayFiles::pidFile() {
    return kPrefix + ".pid";
}
std::string OverlayFiles::settingsFile() {
    return kPrefix + ".settings.plist";
}

std::optional<std::string> OverlayFiles::contents(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    if (!file) return std::nullopt;
    std::ostringstream text;
    text << file.rdbuf();
    return text.str();
}

void OverlayFiles::write(const std::string& path, const std::string& contents) {
    std::ofstream(path, std::ios::binary) << contents;
}

void OverlayFiles::writeSettings(const PropertyDictionary& settings) {
    write(settingsFile(), PlistPropertyLists().serialize(settings));
}

int OverlayFiles::runSkavlo(const std::string& role, const std::vector<std::string>& environment,
                            const std::vector<std::string>& more) {
    std::vector<std::string> arguments{SKAVLO_EXECUTABLE};
    if (!role.empty()) arguments.push_back(role);
    arguments.insert(arguments.end(), more.begin(), more.end());
    auto child = rig::Child::start({arguments, environment, {}, -1});
    if (!child) {
        ADD_FAILURE() << child.error().message;
        return -1;
    }
    const auto status = child->wait(rig::Deadline(std::chrono::seconds(20)));
    EXPECT_TRUE(status) << "skavlo " << role << " did not end";
    return status.value_or(-1);
}

void OverlayRig::startServer(const rig::XServerOptions& options) {
    auto server = rig::XServer::start(options);
    ASSERT_TRUE(server) << server.error().message;
    server_ = std::make_unique<rig::XServer>(std::move(*server));
    auto display = server_->connect();
    ASSERT_TRUE(display) << display.error().message;
    display_ = std::move(*display);
    // A window, for what compositors make of an empty root window is their own affair.
    constexpr std::uint16_t kLargerThanAnyScreen = 4096;
    const xcb_window_t background = xcb_generate_id(display_->get());
    const std::array<std::uint32_t, 2> values{kBackground, 1};
    xcb_create_window(display_->get(), XCB_COPY_FROM_PARENT, background, display_->root(), 0, 0,
                      kLargerThanAnyScreen, kLargerThanAnyScreen, 0, XCB_WINDOW_CLASS_INPUT_OUTPUT,
                      XCB_COPY_FROM_PARENT, XCB_CW_BACK_PIXEL | XCB_CW_OVERRIDE_REDIRECT,
                      values.data());
    xcb_map_window(display_->get(), background);
    ASSERT_TRUE(display_->sync());
}

void OverlayRig::startCompositor() {
    auto compositor = rig::Compositor::start(*server_);
    ASSERT_TRUE(compositor) << compositor.error().message;
    compositor_ = std::move(*compositor);
}

void OverlayRig::setFontResolution(int dotsPerInch) {
    const std::string resources =
        "Xcursor.size:\t24\nXft.dpi:\t" + std::to_string(dotsPerInch) + '\n';
    xcb_change_property(display().get(), XCB_PROP_MODE_REPLACE, display().root(),
                        XCB_ATOM_RESOURCE_MANAGER, XCB_ATOM_STRING, 8,
                        static_cast<std::uint32_t>(resources.size()), resources.data());
    ASSERT_TRUE(display().sync());
}

void OverlayRig::startOverlay() {
    ASSERT_NO_FATAL_FAILURE(launchOverlay());
    captureUntil(isClean, "the background alone, at the start");
}

void OverlayRig::launchOverlay() {
    auto environment = server_->environment();
    // Nothing of the desktop on which the tests may run.
    for (const char* name :
         {"WAYLAND_DISPLAY", "XDG_RUNTIME_DIR", "PIPEWIRE_RUNTIME_DIR", "PIPEWIRE_REMOTE"}) {
        environment.emplace_back(name);
    }
    auto overlay = rig::Child::start({{SKAVLO_EXECUTABLE, "-hud"}, environment, {}, -1});
    ASSERT_TRUE(overlay) << overlay.error().message;
    overlay_ = std::move(*overlay);
    ASSERT_TRUE(
        rig::waitForOverlayWindow(*display_, rig::Deadline(kPatience), {overlay_->endDescriptor()}))
        << "the overlay showed no window";
}

void OverlayRig::start(const PropertyDictionary& settings) {
    writeSettings(settings);
    ASSERT_NO_FATAL_FAILURE(startServer());
    ASSERT_NO_FATAL_FAILURE(startCompositor());
    ASSERT_NO_FATAL_FAILURE(startOverlay());
}

xcb_window_t OverlayRig::overlayWindow() const {
    return rig::findOverlayWindow(*display_).value_or(XCB_NONE);
}

Bitmap OverlayRig::capture() {
    auto screen = rig::captureRoot(*display_);
    if (!screen) {
        ADD_FAILURE() << screen.error().message;
        return {{1, 1}, {0}};
    }
    return std::move(*screen);
}

Bitmap OverlayRig::captureUntil(const std::function<bool(const Bitmap&)>& wanted,
                                const char* what) {
    const rig::Deadline deadline(kPatience);
    while (true) {
        Bitmap screen = capture();
        if (wanted(screen)) return screen;
        if (deadline.passed()) {
            ADD_FAILURE() << "never seen: " << what;
            return screen;
        }
    }
}

std::uint32_t OverlayRig::at(const Bitmap& screen, int x, int y) {
    return rig::pixelAt(screen, {x, y});
}

bool OverlayRig::isClean(const Bitmap& screen) {
    return std::all_of(screen.pixels.begin(), screen.pixels.end(),
                       [](std::uint32_t pixel) { return pixel == kBackground; });
}

}  // namespace skavlo
