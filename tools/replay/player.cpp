#include "tools/replay/player.h"

#include <utility>

#include "overlay/hid_input.h"
#include "overlay/overlay_app_delegate.h"
#include "settings/loose_value.h"

namespace skavlo {

Player::Player(const PlayerSetup& setup)
    : files_(directory_.settingsFile(), setup.settings),
      screen_(setup.pixels, setup.scale),
      rasterizer_(setup.rasterProgram),
      tracker_([this] { return screen_.bounds().size; },
               [this](const HidEvent& event) { hidClient_.deliver(event); }) {
    // Making pictures is capturing: settings that show touches only then show them.
    captureState_.setCaptured(true);
    g_skv_overlayAppDelegate = std::make_unique<OverlayAppDelegate>(
        OverlayServices{loop_, loop_, files_, propertyLists_, notifications_, screen_,
                        captureState_, rasterizer_, directory_},
        windowServer_);
    g_skv_hidClient = &hidClient_;
    skv_enable_hid_callback();
    g_skv_overlayAppDelegate->applicationDidFinishLaunchingWithOptions();
    rasterizer_.waitForAll();
    loop_.runPosted();
    beginning_ = loop_.mach_absolute_time();
}

Player::~Player() {
    g_skv_overlayAppDelegate.reset();
    g_skv_hidClient = nullptr;
    g_skv_hidRegistered = false;
}

std::vector<std::string> Player::warnings() const {
    std::vector<std::string> result;
    const auto bytes = files_.read(directory_.settingsFile());
    const auto settings = bytes ? propertyLists_.parse(*bytes) : PropertyDictionary();
    if (!settings) return {"no property list: the overlay's defaults are shown"};
    for (const std::string& what : rasterizer_.failed()) {
        result.push_back("cannot draw: " + what);
    }
    const auto* image = lookUp(*settings, "imagePath");
    const auto* path = image != nullptr ? image->as<std::string>() : nullptr;
    if (path != nullptr && !path->empty() && !files_.fileExistsAtPath(*path)) {
        result.push_back("no such image: " + *path);
    }
    if (boolValue(lookUp(*settings, "forceHide"))) {
        result.emplace_back("forceHide is set: nothing is shown");
    }
    return result;
}

void Player::advanceTo(MachTime time) {
    loop_.advanceTo(beginning_ + time);
}

void Player::touch(const RecordedFrame& frame, Size recorded) {
    advanceTo(frame.time);
    const Size own = screen_.bounds().size;
    const double stretchX = own.width / recorded.width;
    const double stretchY = own.height / recorded.height;
    for (const RecordedTouch& touch : frame.touches) {
        const ContactKey key{0, touch.contact};
        const Point point{touch.point.x * stretchX, touch.point.y * stretchY};
        switch (touch.phase) {
            case TouchPhase::kDown:
                tracker_.down(key, point);
                break;
            case TouchPhase::kMove:
                tracker_.motion(key, point);
                break;
            case TouchPhase::kUp:
                tracker_.up(key);
                break;
        }
    }
    tracker_.frame(loop_.mach_absolute_time());
    loop_.runPosted();
}

Bitmap Player::show(MachTime time) {
    advanceTo(time);
    windowServer_.refresh();
    loop_.runPosted();
    return {screen_.pixels(), windowServer_.pixels()};
}

}  // namespace skavlo
