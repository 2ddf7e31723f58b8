#include "tests/e2e/wayland/extended/mutter_rig.h"

#include <cstring>
#include <filesystem>
#include <fstream>
#include <set>
#include <sstream>
#include <string_view>

#include "tools/rig/overlay_window.h"

namespace skavlo {

namespace {

// The secret of an X authority file's first entry: family, then address, display, name and secret,
// each behind its length. All numbers have two bytes, the higher one first.
std::string readSecret(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    const auto number = [&] {
        const int high = file.get();
        return high * 256 + file.get();
    };
    const auto text = [&] {
        std::string result(static_cast<std::size_t>(number()), '\0');
        file.read(result.data(), static_cast<std::streamsize>(result.size()));
        return result;
    };
    number();
    for (int i = 0; i < 3; ++i) text();
    return text();
}

// ":0" of the X socket with the lowest number on which the process listens; empty: there is none.
std::string displayOf(pid_t process) {
    std::set<std::string> inodes;
    for (const auto& entry :
         std::filesystem::directory_iterator("/proc/" + std::to_string(process) + "/fd")) {
        std::error_code closed;
        const std::string target = std::filesystem::read_symlink(entry.path(), closed);
        if (target.starts_with("socket:[")) inodes.insert(target.substr(8, target.size() - 9));
    }
    constexpr std::string_view kSocket = "/tmp/.X11-unix/X";
    std::set<int> numbers;
    std::ifstream table("/proc/net/unix");
    for (std::string line; std::getline(table, line);) {
        std::istringstream words(line);
        std::string inode;
        std::string path;
        for (int i = 0; i < 7; ++i) words >> inode;
        words >> path;
        if (inodes.contains(inode) && path.starts_with(kSocket)) {
            numbers.insert(std::stoi(path.substr(kSocket.size())));
        }
    }
    return numbers.empty() ? "" : ":" + std::to_string(*numbers.begin());
}

}  // namespace

void Mutter::startMutter() {
    startDemandingSession(
        "mutter", {.command = {"mutter", "--headless", "--virtual-monitor", "1280x800", "--wayland",
                               "--wayland-display", "wayland-mutter"},
                   .environment = {"GSETTINGS_BACKEND=memory"},
                   .bus = true});
    if (IsSkipped()) return;
    if (const auto reason = whyNotRunnable("Xwayland")) GTEST_SKIP() << *reason;
    ASSERT_NO_FATAL_FAILURE(startClient());
    ASSERT_NO_FATAL_FAILURE(plugTouchscreen());
    for (const auto& entry : std::filesystem::directory_iterator(session().file(""))) {
        if (entry.path().filename().string().starts_with(".mutter-Xwaylandauth")) {
            authorityFile_ = entry.path();
        }
    }
    ASSERT_FALSE(authorityFile_.empty()) << "mutter runs no XWayland";
    displayName_ = displayOf(session().compositor().pid());
    ASSERT_FALSE(displayName_.empty()) << "mutter listens for no X client";
}

void Mutter::startOverlay() {
    ASSERT_NO_FATAL_FAILURE(
        WaylandRig::startOverlay({"DISPLAY=" + displayName_, "XAUTHORITY=" + authorityFile_}));
    auto display = rig::Display::connect(displayName_, readSecret(authorityFile_));
    ASSERT_TRUE(display) << display.error().message;
    display_ = std::move(*display);
    ASSERT_TRUE(
        rig::waitForOverlayWindow(*display_, rig::Deadline(kPatience), {overlay_->endDescriptor()}))
        << complaints();
}

std::uint32_t Mutter::windowPixel(PixelPoint place) const {
    const auto window = rig::findOverlayWindow(*display_);
    if (!window) return 0;
    const rig::XcbPointer<xcb_get_image_reply_t> image(
        xcb_get_image_reply(display_->get(),
                            xcb_get_image(display_->get(), XCB_IMAGE_FORMAT_Z_PIXMAP, *window,
                                          static_cast<std::int16_t>(place.x),
                                          static_cast<std::int16_t>(place.y), 1, 1, ~0U),
                            nullptr));
    std::uint32_t pixel = 0;
    if (image) std::memcpy(&pixel, xcb_get_image_data(image.get()), sizeof pixel);
    return pixel;
}

}  // namespace skavlo
