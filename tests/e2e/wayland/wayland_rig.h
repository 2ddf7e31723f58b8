// The real overlay, run by root, on a private compositor that somebody else runs.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/bitmap.h"
#include "tests/e2e/overlay/overlay_rig.h"
#include "tests/e2e/wayland/wayland_client.h"
#include "tests/e2e/wayland/wayland_session.h"
#include "tests/unit/input/support/mock_devices.h"

namespace skavlo {

class WaylandRig : public OverlayFiles {
  protected:
    static constexpr std::chrono::seconds kPatience{20};

    // Skips the test where the compositor is not installed; one that does not start is a failure.
    void startSession(const WaylandSessionOptions& options);
    // Here that is no failure either: it asks for more than every machine has.
    void startDemandingSession(const std::string& program, const WaylandSessionOptions& options);
    // A full-screen window of the background's colour.
    void startClient();
    // A machine without input devices, as far as the overlay sees.
    void mockDevices();
    // With a touchscreen of 1000 x 500 units.
    void plugTouchscreen(const std::vector<std::string>& properties = {});
    // What a program that root runs in the session needs, the machine's devices included.
    // `environment`: over that.
    [[nodiscard]] std::vector<std::string> rootEnvironment(
        const std::vector<std::string>& environment = {}) const;
    void startOverlay(const std::vector<std::string>& environment = {});

    // Fractions of the touchscreen.
    void touchAt(double x, double y, int slot = 0);
    void moveTo(double x, double y, int slot = 0);
    void lift(int slot = 0);

    // A finger that is down reports only while it moves, so these move one to and fro between two
    // places so near to each other, (0.25, 0.5) and (0.26, 0.5), that their markers overlap.
    // `shows`: whether a marker can be seen now.
    void moveUntilShown(bool shown, const std::function<bool()>& shows);
    void expectHidden(const std::function<bool()>& shows);

    // One output as grim sees it; empty: the first.
    Bitmap capture(const std::string& output = "");
    Bitmap captureUntil(const std::function<bool(const Bitmap&)>& wanted, const char* what,
                        const std::string& output = "");
    // Waits for a state of the overlay's process, as /proc names it: S when it has done what it
    // had to do.
    void waitUntilOverlayIs(char state);
    // Until the overlay has heard of all that has happened so far in the compositor, of which
    // `other` is another client.
    void waitUntilOverlayHeard(WaylandClient& other);
    // First, until there are so many outputs.
    void waitUntilOverlayHeardOf(std::size_t outputs, WaylandClient& other);
    // Waits until the overlay has lost its process: its status.
    int endStatus();
    // What the overlay said on its standard error so far.
    [[nodiscard]] std::string complaints() const;

    WaylandSession& session() { return *session_; }
    WaylandClient& client() { return *client_; }

    // The colour of the client's window. The functions below take that of the last pixel, so that
    // they need no client.
    static bool isBackground(std::uint32_t pixel) { return pixel == kBackground; }
    static std::uint32_t at(const Bitmap& picture, int x, int y);
    static bool isClean(const Bitmap& picture);
    // The middle of all that is not background; (-1, -1): there is nothing else.
    static Point centreOfMarker(const Bitmap& picture);
    // From the first column that is not background to the last.
    static int widthOfMarker(const Bitmap& picture);
    // True once the marker in its full size lies there.
    static std::function<bool(const Bitmap&)> markerAt(Point place, int width);

  private:
    void sync();
    void moveToAndFro();

  protected:
    std::optional<WaylandSession> session_;
    std::unique_ptr<WaylandClient> client_;
    std::unique_ptr<test::MockBed> bed_;
    std::unique_ptr<test::MockDevice> screen_;
    std::optional<rig::Child> overlay_;

  private:
    bool there_ = false;
};

// Markers without a trail.
inline const PropertyDictionary kWithoutTrail{{"colorTracking", false}};
inline constexpr int kMarkerWidth = 55;  // points

}  // namespace skavlo
