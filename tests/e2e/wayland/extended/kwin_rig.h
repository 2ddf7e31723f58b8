// The overlay on KWin.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "tests/e2e/wayland/extended/bus_client.h"
#include "tests/e2e/wayland/wayland_rig.h"

namespace skavlo {

class KWin : public WaylandRig {
  protected:
    // Outputs of 1280 x 800 points, with as many pixels as that takes: Virtual-0 and so on.
    // `touchscreen`: its properties.
    void startKWin(const std::string& scale, int outputs = 1,
                   const std::vector<std::string>& touchscreen = {}) {
        // A copy, because the installed one has a capability that not everybody can be given.
        const std::string run =
            "cp \"$(command -v kwin_wayland)\" @/ && exec @/kwin_wayland --virtual --width 1280 "
            "--height 800 --scale " +
            scale + " --output-count " + std::to_string(outputs) +
            " --socket wayland-kwin --no-lockscreen --no-global-shortcuts";
        startDemandingSession(
            "kwin_wayland",
            {.command = {"sh", "-c", run},
             .environment = {"KWIN_COMPOSE=O2", "KWIN_SCREENSHOT_NO_PERMISSION_CHECKS=1",
                             "KWIN_WAYLAND_NO_PERMISSION_CHECKS=1"},
             .bus = true});
        if (IsSkipped()) return;
        ASSERT_NO_FATAL_FAILURE(startClient());
        ASSERT_NO_FATAL_FAILURE(plugTouchscreen(touchscreen));
        auto bus = BusClient::connect(session());
        ASSERT_TRUE(bus) << bus.error().message;
        bus_ = std::move(*bus);
    }
    void untilPicture(const std::function<bool(const Bitmap&)>& wanted, const char* what,
                      const std::string& output = "Virtual-0") {
        const rig::Deadline deadline(kPatience);
        while (true) {
            client().roundTrip();
            auto picture = captureKWin(*bus_, output);
            ASSERT_TRUE(picture) << picture.error().message;
            if (wanted(*picture)) return;
            ASSERT_FALSE(deadline.passed())
                << "never seen: " << what << "; the last picture had " << picture->size.width
                << " x " << picture->size.height << " pixels, the marker at "
                << centreOfMarker(*picture).x << "," << centreOfMarker(*picture).y << ", "
                << widthOfMarker(*picture) << " wide";
        }
    }

    std::optional<BusClient> bus_;
};

}  // namespace skavlo
