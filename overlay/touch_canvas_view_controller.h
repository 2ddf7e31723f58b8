#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <string>

#include "overlay/look.h"
#include "overlay/marker_scene.h"
#include "overlay/picture_source.h"
#include "platform/bitmap.h"
#include "platform/files.h"
#include "platform/geometry.h"
#include "platform/notifications.h"
#include "platform/property_list.h"
#include "platform/run_loop.h"
#include "platform/screen.h"
#include "platform/time.h"
#include "settings/colour.h"
#include "settings/settings_directory.h"

namespace skavlo {

using FingerId = std::int64_t;

// Any other value draws circles without trails that lift as emoji do.
enum class DisplayMode : std::int64_t { color = 0, image = 1, emoji = 2 };

// The platform as the overlay sees it; everything outlives the overlay.
struct OverlayServices {
    RunLoop& runLoop;
    const Clock& clock;
    Files& files;
    const PropertyLists& propertyLists;
    Notifications& notifications;
    const Screen& screen;
    CaptureState& captureState;
    Rasterizer& rasterizer;
    SettingsDirectory directory;
};

// The canvas: reads the settings, decides what each touch shows and when nothing may be shown.
// Main thread only, except where noted.
class TouchCanvasViewController {
  public:
    // `needsDisplay` is called after every change of what is to be seen.
    TouchCanvasViewController(OverlayServices& services, std::function<void()> needsDisplay);
    ~TouchCanvasViewController();
    TouchCanvasViewController(const TouchCanvasViewController&) = delete;
    TouchCanvasViewController& operator=(const TouchCanvasViewController&) = delete;

    void viewDidLoad();
    void skv_reloadSettings();
    void skv_screenCaptureDidChange();

    void skv_handleTouch(FingerId id, Point atPoint);
    void skv_liftTouch(FingerId id);
    void skv_liftAllTouches();
    // From any thread; elsewhere than on the main thread it returns at once and clears later.
    void skv_forceClearAllGarbage();
    void skv_renderHeartbeat();
    [[nodiscard]] double skv_currentAnimDuration() const;

    // State of the touches.
    std::map<FingerId, MarkerId> skv_markerViews;
    std::map<FingerId, Point> skv_trailAnchors;
    FingerId skv_activeSingleFingerId = kNoFinger;
    bool skv_isSuppressed = false;
    MarkerScene skv_containerView;
    std::unique_ptr<Timer> skv_daemonHeartbeatTimer;

    // Settings, as last read.
    bool skv_singleFingerMode = false;
    DisplayMode skv_displayMode = DisplayMode::color;
    Colour skv_fillColor = kLightGrayColor;
    Colour skv_borderColor = kWhiteColor;
    double skv_colorAlpha = 0;
    double skv_colorSize = 0;
    double skv_colorBorderWidth = 0;
    double skv_colorLiftScale = 0;
    double skv_colorAnimDuration = 0;
    bool skv_colorTracking = false;
    double skv_imageAlpha = 0;
    double skv_imageSize = 0;
    double skv_imageLiftScale = 0;
    double skv_imageAnimDuration = 0;
    bool skv_imageTracking = false;
    std::shared_ptr<const Bitmap> skv_customImage;
    PropertyValue skv_emojiString;
    double skv_emojiAlpha = 0;
    double skv_emojiSize = 0;
    double skv_emojiLiftScale = 0;
    double skv_emojiAnimDuration = 0;
    bool skv_emojiTracking = false;
    bool skv_emojiShowBorder = false;
    double skv_emojiBorderAlpha = 0;
    double skv_emojiFillAlpha = 0;
    double skv_emojiBorderWidth = 0;
    Colour skv_emojiFillColor = kLightGrayColor;
    Colour skv_emojiBorderColor = kWhiteColor;

    static constexpr FingerId kNoFinger = -1;

  private:
    struct ModeBehaviour {
        bool leavesTrail;
        double trailSeconds;
        double liftScale;
        double animSeconds;
    };

    // canvas_configuration.cpp
    [[nodiscard]] PropertyDictionary readSettings() const;
    void readColorMode(const PropertyDictionary& settings);
    void readImageMode(const PropertyDictionary& settings);
    void readCustomImage(const PropertyDictionary& settings);
    void readEmojiMode(const PropertyDictionary& settings);

    // canvas_visibility.cpp
    void decideVisibility(const PropertyDictionary& settings);
    void applyVisibility();

    // canvas_markers.cpp
    [[nodiscard]] ModeBehaviour behaviour() const;
    void dropTrailCopyIfDue(FingerId id, Point point);

    // canvas_looks.cpp
    void prepareLooks();
    void prepareImageLook();
    void prepareEmojiLook();
    [[nodiscard]] std::shared_ptr<const Look> currentLook();
    [[nodiscard]] std::shared_ptr<const Look> circleLook() const;
    void composeEmojiLook();
    void setSprite(std::shared_ptr<Look>& look, double size, double opacity,
                   std::shared_ptr<const Bitmap> picture);
    [[nodiscard]] int pictureSide(double size, double liftScale) const;

    OverlayServices& services_;
    std::function<void()> needsDisplay_;
    std::unique_ptr<NotificationRegistration> reloadRegistration_;
    PictureSource imageSource_;
    PictureSource emojiSource_;
    std::string emojiLabelText_;
    std::shared_ptr<const Bitmap> emojiLabel_;  // null until it has been drawn
    std::shared_ptr<Look> imageLook_;
    std::shared_ptr<Look> emojiLook_;
    // What is still posted when the canvas is gone finds this expired.
    std::shared_ptr<const bool> alive_ = std::make_shared<const bool>(true);
};

// The overlay's smallest sign of life: one point in the screen's corner, almost transparent.
struct HeartbeatView {
    Rect frame;
    double alpha;
    Colour backgroundColor;
};
extern std::unique_ptr<HeartbeatView> g_skv_heartbeatView;

}  // namespace skavlo
