// What the settings application costs: from exec to its first frame, and its memory; and how soon a
// change reaches the overlay.
#include <sys/inotify.h>
#include <unistd.h>

#include <array>
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>

#include "bench/bench_rig.h"
#include "bench/samples.h"
#include "platform/linux/notify/socket_notifications.h"
#include "platform/linux/plist/plist_property_lists.h"
#include "settings/default_settings.h"
#include "tools/rig/overlay_window.h"

namespace skavlo::bench {
namespace {

using Clock = std::chrono::steady_clock;
using Milliseconds = std::chrono::duration<double, std::milli>;

constexpr PixelPoint kInWindow{195, 300};
const std::string kSettingsFile = SKAVLO_LIBRARY_PREFIX "Caches/com.oxbrel.skavlo.settings.plist";

std::uint32_t pixelOf(const rig::Display& display) {
    const rig::XcbPointer<xcb_get_image_reply_t> image(
        xcb_get_image_reply(display.get(),
                            xcb_get_image(display.get(), XCB_IMAGE_FORMAT_Z_PIXMAP, display.root(),
                                          kInWindow.x, kInWindow.y, 1, 1, ~0U),
                            nullptr));
    if (!image) std::exit(1);
    const std::uint8_t* bytes = xcb_get_image_data(image.get());
    return bytes[0] | static_cast<std::uint32_t>(bytes[1]) << 8 |
           static_cast<std::uint32_t>(bytes[2]) << 16;
}

double residentMegabytes(const rig::Child& child) {
    std::ifstream lines("/proc/" + std::to_string(child.pid()) + "/status");
    for (std::string line; std::getline(lines, line);) {
        if (line.starts_with("VmRSS:")) return std::strtod(line.c_str() + 6, nullptr) / 1024;
    }
    return 0;
}

void waitForChange(const rig::Display& display, std::uint32_t before) {
    const rig::Deadline patience(std::chrono::seconds(20));
    while (pixelOf(display) == before) {
        if (patience.passed()) {
            std::fprintf(stderr, "the settings application showed nothing\n");
            std::exit(1);
        }
    }
}

void measureStart(const rig::XServer& server, const std::string& program) {
    const rig::Display display = orDie(server.connect());
    const std::uint32_t empty = pixelOf(display);
    Samples start;
    Samples memory;
    for (int i = 0; i < 15; ++i) {
        const auto begin = Clock::now();
        rig::Child child = startProgram(server, {program});
        waitForChange(display, empty);
        start.add(Milliseconds(Clock::now() - begin).count());
        // The splash has the screen behind it drawn once more than it needs.
        rig::waitReadable({child.endDescriptor()}, rig::Deadline(std::chrono::milliseconds(1500)));
        memory.add(residentMegabytes(child));
        child.stop();
        while (pixelOf(display) != empty) {
        }
    }
    printRow("settings from exec to first frame, median", start.median(), 120, "ms");
    std::printf("  minimum %.1f ms, maximum %.1f ms\n", start.minimum(), start.quantile(1));
    printRow("resident memory of the settings application", memory.quantile(1), 60, "MB");
}

// From the notification to the overlay's having read the file.
void measureReload(const rig::XServer& server, const std::string& program) {
    const rig::Display display = orDie(server.connect());
    rig::Child overlay = startProgram(server, {program, "-hud"});
    const rig::Deadline patience(std::chrono::seconds(20));
    if (!rig::waitForOverlayWindow(display, patience, {overlay.endDescriptor()})) std::exit(1);
    std::ofstream(kSettingsFile) << PlistPropertyLists().serialize(defaultSettings());
    Samples samples;
    for (int i = 0; i < 100; ++i) {
        const rig::FileDescriptor watch(inotify_init1(IN_CLOEXEC));
        inotify_add_watch(watch.get(), kSettingsFile.c_str(), IN_CLOSE_NOWRITE);
        const auto begin = Clock::now();
        postNotification(SKAVLO_RUN_DIRECTORY "/notify", "com.oxbrel.skavlo.reload");
        if (!rig::waitReadable({watch.get()}, patience)) std::exit(1);
        samples.add(Milliseconds(Clock::now() - begin).count());
    }
    overlay.stop();
    std::filesystem::remove(kSettingsFile);
    printRow("from the reload notification to the overlay's having read, longest",
             samples.quantile(1), 50, "ms");
    std::printf("  median %.2f ms\n", samples.median());
}

}  // namespace
}  // namespace skavlo::bench

int main(int argc, char** argv) {
    using namespace skavlo::bench;
    if (argc != 2) {
        std::fprintf(stderr, "Usage: settings_costs PROGRAM\n");
        return 2;
    }
    const skavlo::rig::XServer server = startServer();
    measureStart(server, argv[1]);
    measureReload(server, argv[1]);
}
