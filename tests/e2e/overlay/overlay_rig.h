// The real overlay on a private X server with a touch screen.
#pragma once

#include <gtest/gtest.h>

#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/bitmap.h"
#include "platform/geometry.h"
#include "platform/property_list.h"
#include "tools/rig/child.h"
#include "tools/rig/compositor.h"
#include "tools/rig/display.h"
#include "tools/rig/x_server.h"

namespace skavlo {

inline constexpr std::uint32_t kBackground = 0xff204060;

// The middle of all that is lighter than the background, weighted by how much; (-1, -1): nothing
// is.
Point centreOfMass(const Bitmap& screen);

// The overlay's files of this build; removed before and after each test.
class OverlayFiles : public testing::Test {
  protected:
    OverlayFiles();
    ~OverlayFiles() override;
    OverlayFiles(const OverlayFiles&) = delete;
    OverlayFiles& operator=(const OverlayFiles&) = delete;

    static std::string pidFile();
    static std::string settingsFile();
    static std::optional<std::string> contents(const std::string& path);
    static void write(const std::string& path, const std::string& contents);
    static void writeSettings(const PropertyDictionary& settings);
    // Runs the executable with one argument (none when empty), and more behind it, and returns its
    // wait status.
    static int runSkavlo(const std::string& role, const std::vector<std::string>& environment = {},
                         const std::vector<std::string>& more = {});
};

class OverlayRig : public OverlayFiles {
  protected:
    static constexpr PixelSize kScreen{1280, 720};
    static constexpr std::chrono::seconds kPatience{20};

    // Starts what is asked for; a fatal failure when something does not come up.
    void startServer(const rig::XServerOptions& options = {.sizes = {kScreen}});
    void startCompositor();
    // As desktops tell programs of a dense screen.
    void setFontResolution(int dotsPerInch);
    void startOverlay();
    // The overlay alone, whatever else is on the screen.
    void launchOverlay();
    void start(const PropertyDictionary& settings = {});

    rig::Display& display() { return *display_; }
    rig::TouchDevice& touch() { return *server_->touch(); }
    rig::Child& overlay() { return *overlay_; }
    [[nodiscard]] xcb_window_t overlayWindow() const;

    Bitmap capture();
    // Captures until the picture is as wanted; the last one, with a failure, at the deadline.
    Bitmap captureUntil(const std::function<bool(const Bitmap&)>& wanted, const char* what);
    // All of the screen shows the background.
    static bool isClean(const Bitmap& screen);
    static std::uint32_t at(const Bitmap& screen, int x, int y);

    std::unique_ptr<rig::XServer> server_;
    std::optional<rig::Display> display_;
    std::optional<rig::Compositor> compositor_;
    std::optional<rig::Child> overlay_;
};

}  // namespace skavlo
