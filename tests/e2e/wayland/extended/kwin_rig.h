// The overlay on KWin.
#pragma once

#include <functional>
#include <optional>
#include <string>

#include "tests/e2e/wayland/extended/bus_client.h"
#include "tests/e2e/wayland/wayland_rig.h"

namespace skavlo {

class KWin : public WaylandRig {
  protected:
    // 1280 x 800 points on an output with as many pixels as that takes.
    void startKWin(const std::string& scale) {
        // A copy, because the installed one has a capability that not everybody can be given.
        const std::string run =
            "cp \"$(command -v kwin_wayland)\" @/ && exec @/kwin_wayland --virtual --width 1280 "
            "--height 800 --scale " +
            scale + " --socket wayland-kwin --no-lockscreen --no-global-shortcuts";
        startDemandingSession(
            "kwin_wayland",
            {.command = {"sh", "-c", run},
             .environment = {"KWIN_COMPOSE=O2", "KWIN_SCREENSHOT_NO_PERMISSION_CHECKS=1",
                             "KWIN_WAYLAND_NO_PERMISSION_CHECKS=1"},
             .bus = true});
        if (IsSkipped()) return;
        ASSERT_NO_FATAL_FAILURE(startClient());
        ASSERT_NO_FATAL_FAILURE(plugTouchscreen());
        auto bus = BusClient::connect(session());
        ASSERT_TRUE(bus) << bus.error().message;
        bus_ = std::move(*bus);
    }
    void untilPicture(const std::function<bool(const Bitmap&)>& wanted, const char* what) {
        const rig::Deadline deadline(kPatience);
        while (true) {
            client().roundTrip();
            auto picture = captureKWin(*bus_, "Virtual-0");
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
