// The real overlay on a screen in memory, to which touches are played in virtual time.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "overlay/touch_canvas_view_controller.h"
#include "platform/bitmap.h"
#include "platform/digitizer/contact_tracker.h"
#include "platform/headless/headless_display.h"
#include "platform/headless/headless_run_loop.h"
#include "platform/headless/headless_system.h"
#include "platform/linux/plist/plist_property_lists.h"
#include "tools/recording/recording.h"
#include "tools/replay/replay_system.h"

namespace skavlo {

struct PlayerSetup {
    PixelSize pixels;
    double scale = 1;                     // pixels per point
    std::optional<std::string> settings;  // the settings file's contents; none: there is no file
    std::string rasterProgram;
};

// One at a time: the overlay's delegate and input client are the process's.
class Player {
  public:
    // Returns once every picture that the settings name is there or has failed.
    explicit Player(const PlayerSetup& setup);
    ~Player();
    Player(const Player&) = delete;
    Player& operator=(const Player&) = delete;

    // What of the settings cannot be shown as they say, in words.
    [[nodiscard]] std::vector<std::string> warnings() const;

    // Times count from the recording's beginning and never go back from call to call.
    // `recorded` is the size of the screen that the touches refer to; it is stretched over this
    // one.
    void touch(const RecordedFrame& frame, Size recorded);
    // What is seen at a time, premultiplied.
    Bitmap show(MachTime time);
    // Whether something seen at the last show() moves by itself.
    [[nodiscard]] bool moving() const { return windowServer_.refreshRequested(); }

  private:
    void advanceTo(MachTime time);

    HeadlessRunLoop loop_;
    SettingsDirectory directory_{"/"};
    ReplayFiles files_;
    PlistPropertyLists propertyLists_;
    HeadlessNotifications notifications_{loop_};
    HeadlessScreen screen_;
    HeadlessCaptureState captureState_;
    HeadlessWindowServer windowServer_{screen_};
    HeadlessHidClient hidClient_{loop_};
    ReplayRasterizer rasterizer_;
    ContactTracker tracker_;
    MachTime beginning_ = 0;
};

}  // namespace skavlo
