// The overlay on mutter, which has no layer shell: an X window through XWayland.
#include <gmock/gmock.h>
#include <linux/input-event-codes.h>

#include <cstring>
#include <filesystem>
#include <fstream>
#include <set>
#include <sstream>
#include <string_view>

#include "tests/e2e/wayland/extended/bus_client.h"
#include "tests/e2e/wayland/wayland_rig.h"
#include "tools/rig/overlay_window.h"

namespace skavlo {
namespace {

using rig::Deadline;

constexpr const char* kService = "org.gnome.Mutter.RemoteDesktop";
constexpr const char* kSessionInterface = "org.gnome.Mutter.RemoteDesktop.Session";

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

class Mutter : public WaylandRig {
  protected:
    void startMutter() {
        startDemandingSession("mutter",
                              {.command = {"mutter", "--headless", "--virtual-monitor", "1280x800",
                                           "--wayland", "--wayland-display", "wayland-mutter"},
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
    void startPointer() {
        auto bus = BusClient::connect(session());
        ASSERT_TRUE(bus) << bus.error().message;
        bus_ = std::move(*bus);
        auto made =
            bus_->call({kService, "/org/gnome/Mutter/RemoteDesktop", kService, "CreateSession"});
        if (!made) GTEST_SKIP() << "mutter lets nobody click: " << made.error().message;
        const char* path = nullptr;
        g_variant_get(made->get(), "(&o)", &path);
        pointerPath_ = path;
        ASSERT_NO_FATAL_FAILURE(pointer("Start", nullptr));
        // From wherever it is into the corner and on to the middle of the marker.
        ASSERT_NO_FATAL_FAILURE(
            pointer("NotifyPointerMotionRelative", g_variant_new("(dd)", -5000.0, -5000.0)));
        ASSERT_NO_FATAL_FAILURE(
            pointer("NotifyPointerMotionRelative", g_variant_new("(dd)", 320.0, 400.0)));
        ASSERT_TRUE(
            client().waitUntil([&] { return client().pointerEntered(); }, Deadline(kPatience)))
            << "the pointer did not come";
    }
    void pointer(const char* method, GVariant* arguments) {
        const auto done =
            bus_->call({kService, pointerPath_, kSessionInterface, method}, arguments);
        ASSERT_TRUE(done) << method << ": " << done.error().message;
    }
    void expectClick() {
        const std::size_t before = client().presses().size();
        for (const bool pressed : {true, false}) {
            ASSERT_NO_FATAL_FAILURE(
                pointer("NotifyPointerButton", g_variant_new("(ib)", BTN_LEFT, pressed ? 1 : 0)));
        }
        ASSERT_TRUE(client().waitUntil([&] { return client().presses().size() > before; },
                                       Deadline(kPatience)))
            << "the click did not arrive";
    }
    // What the overlay's window shows there; 0: nothing.
    std::uint32_t windowPixel(const rig::Display& display, PixelPoint place) {
        const auto window = rig::findOverlayWindow(display);
        if (!window) return 0;
        const rig::XcbPointer<xcb_get_image_reply_t> image(
            xcb_get_image_reply(display.get(),
                                xcb_get_image(display.get(), XCB_IMAGE_FORMAT_Z_PIXMAP, *window,
                                              static_cast<std::int16_t>(place.x),
                                              static_cast<std::int16_t>(place.y), 1, 1, ~0U),
                                nullptr));
        std::uint32_t pixel = 0;
        if (image) std::memcpy(&pixel, xcb_get_image_data(image.get()), sizeof pixel);
        return pixel;
    }

    std::string authorityFile_;
    std::string displayName_;
    std::optional<BusClient> bus_;
    std::string pointerPath_;
};

// Clicks of a pointer that is over the window already: they arrive without renewed input shapes
// too, for mutter chooses the window below a pointer only when something comes or goes there.
TEST_F(Mutter, TheOverlayIsAnXWindowAndClicksOnTheWindowBelowGoOnArriving) {
    writeSettings(kWithoutTrail);
    ASSERT_NO_FATAL_FAILURE(startMutter());
    if (IsSkipped()) return;
    ASSERT_NO_FATAL_FAILURE(startPointer());
    if (IsSkipped()) return;
    ASSERT_NO_FATAL_FAILURE(expectClick()) << "before the overlay runs";
    ASSERT_NO_FATAL_FAILURE(
        startOverlay({"DISPLAY=" + displayName_, "XAUTHORITY=" + authorityFile_}));
    auto display = rig::Display::connect(displayName_, readSecret(authorityFile_));
    ASSERT_TRUE(display) << display.error().message;
    ASSERT_TRUE(
        rig::waitForOverlayWindow(*display, Deadline(kPatience), {overlay_->endDescriptor()}))
        << complaints();
    constexpr std::size_t kClicks = 30;
    for (std::size_t i = 0; i < kClicks; ++i) {
        const bool shows = i % 2 == 0;
        if (shows) {
            touchAt(0.25, 0.5);
        } else {
            lift();
        }
        const Deadline deadline(kPatience);
        while ((windowPixel(*display, {320, 400}) != 0) != shows) {
            ASSERT_FALSE(deadline.passed()) << "no marker came or went";
        }
        ASSERT_NO_FATAL_FAILURE(expectClick()) << "number " << i;
    }
}

}  // namespace
}  // namespace skavlo
