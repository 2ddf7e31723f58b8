// The real overlay on a real X server: its window, its pixels, its life.
#include <gmock/gmock.h>
#include <sys/wait.h>
#include <xcb/shape.h>
#include <xcb/xfixes.h>
#include <xcb/xtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <csignal>
#include <filesystem>

#include "platform/linux/notify/socket_notifications.h"
#include "tests/e2e/overlay/overlay_rig.h"
#include "tests/unit/core/look_table.h"
#include "tools/rig/pointer.h"

namespace skavlo {
namespace {

using rig::Deadline;
using rig::XcbPointer;

class Overlay : public OverlayRig {
  protected:
    xcb_window_t makeWindow(PixelRect rect, bool override, std::uint32_t colour = 0xff00aa00) {
        const xcb_window_t window = xcb_generate_id(display().get());
        const std::array<std::uint32_t, 3> values{colour, override ? 1U : 0U,
                                                  XCB_EVENT_MASK_BUTTON_PRESS |
                                                      XCB_EVENT_MASK_BUTTON_RELEASE |
                                                      XCB_EVENT_MASK_STRUCTURE_NOTIFY};
        xcb_create_window(
            display().get(), XCB_COPY_FROM_PARENT, window, display().root(),
            static_cast<std::int16_t>(rect.x), static_cast<std::int16_t>(rect.y),
            static_cast<std::uint16_t>(rect.width), static_cast<std::uint16_t>(rect.height), 0,
            XCB_WINDOW_CLASS_INPUT_OUTPUT, XCB_COPY_FROM_PARENT,
            XCB_CW_BACK_PIXEL | XCB_CW_OVERRIDE_REDIRECT | XCB_CW_EVENT_MASK, values.data());
        xcb_map_window(display().get(), window);
        xcb_flush(display().get());
        return window;
    }

    std::vector<xcb_window_t> stack() {
        const XcbPointer<xcb_query_tree_reply_t> tree(xcb_query_tree_reply(
            display().get(), xcb_query_tree(display().get(), display().root()), nullptr));
        const auto* children = xcb_query_tree_children(tree.get());
        return {children, children + xcb_query_tree_children_length(tree.get())};
    }
    // Waits for the overlay's own move to the top; its events arrive on the root window.
    bool overlayComesToTheTop() {
        display().selectRootEvents(XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY);
        const xcb_window_t window = overlayWindow();
        const Deadline deadline(kPatience);
        while (stack().back() != window) {
            if (!display().waitForEvent(deadline)) return false;
        }
        return true;
    }

    int endStatus() {
        const auto status = overlay().wait(Deadline(kPatience));
        EXPECT_TRUE(status) << "the overlay did not end";
        return status.value_or(-1);
    }
    void expectCleanEnd() {
        const int status = endStatus();
        EXPECT_TRUE(WIFEXITED(status));
        EXPECT_EQ(WEXITSTATUS(status), 0);
        EXPECT_FALSE(std::filesystem::exists(pidFile()));
    }

    static bool isBackground(std::uint32_t pixel) { return pixel == kBackground; }
    Bitmap untilMarkerAt(int x, int y) {
        return captureUntil([=](const Bitmap& s) { return !isBackground(at(s, x, y)); },
                            "a marker");
    }
    // Whether a reload has been seen shows only with a touch: touches until it has.
    bool touchUntilMarkerIs(std::uint32_t colour) {
        const Deadline deadline(kPatience);
        bool seen = false;
        while (!seen && !deadline.passed()) {
            touch().begin(0, {400, 300});
            seen = at(untilMarkerAt(400, 300), 400, 300) == colour;
            touch().end(0);
            untilClean();
        }
        return seen;
    }
    Bitmap untilClean() { return captureUntil(isClean, "the background alone"); }
};

const PropertyDictionary kPlain{{"colorTracking", false}};

TEST_F(Overlay, WritesItsIdAndRunsUntilTheExitNotification) {
    ASSERT_NO_FATAL_FAILURE(start());
    EXPECT_EQ(contents(pidFile()), std::to_string(overlay().pid()));
    EXPECT_EQ(WEXITSTATUS(runSkavlo("-check")), 1);
    postNotification(SKAVLO_RUN_DIRECTORY "/notify", "com.oxbrel.skavlo.exit");
    expectCleanEnd();
    EXPECT_EQ(WEXITSTATUS(runSkavlo("-check")), 0);
}

TEST_F(Overlay, TheTerminationSignalEndsItLikeTheExitNotification) {
    ASSERT_NO_FATAL_FAILURE(start());
    overlay().signal(SIGTERM);
    expectCleanEnd();
}

TEST_F(Overlay, TheInterruptSignalEndsItLikeTheExitNotification) {
    ASSERT_NO_FATAL_FAILURE(start());
    overlay().signal(SIGINT);
    expectCleanEnd();
}

TEST_F(Overlay, LosingTheServerRemovesItsFileAndFails) {
    ASSERT_NO_FATAL_FAILURE(startServer());
    ASSERT_NO_FATAL_FAILURE(startOverlay());
    server_->process().signal(SIGKILL);
    const int status = endStatus();
    ASSERT_TRUE(WIFEXITED(status));
    EXPECT_NE(WEXITSTATUS(status), 0);
    EXPECT_FALSE(std::filesystem::exists(pidFile()));
}

TEST_F(Overlay, TheExitRoleKillsIt) {
    ASSERT_NO_FATAL_FAILURE(start());
    EXPECT_EQ(WEXITSTATUS(runSkavlo("-exit")), 0);
    const int status = endStatus();
    ASSERT_TRUE(WIFSIGNALED(status));
    EXPECT_EQ(WTERMSIG(status), SIGKILL);
    EXPECT_FALSE(std::filesystem::exists(pidFile()));
}

TEST_F(Overlay, ASecondOneReplacesTheFirst) {
    ASSERT_NO_FATAL_FAILURE(start());
    rig::Child first = std::move(*overlay_);
    ASSERT_NO_FATAL_FAILURE(startOverlay());
    const auto status = first.wait(Deadline(kPatience));
    ASSERT_TRUE(status);
    EXPECT_TRUE(WIFSIGNALED(*status));
    captureUntil(
        [&](const Bitmap&) { return contents(pidFile()) == std::to_string(overlay().pid()); },
        "the second one's id in the file");
}

TEST_F(Overlay, ItsWindowTakesNoInputAndNoFocusAndIsNotManaged) {
    ASSERT_NO_FATAL_FAILURE(start());
    const xcb_window_t window = overlayWindow();
    const XcbPointer<xcb_get_window_attributes_reply_t> attributes(xcb_get_window_attributes_reply(
        display().get(), xcb_get_window_attributes(display().get(), window), nullptr));
    EXPECT_TRUE(attributes->override_redirect);
    const XcbPointer<xcb_shape_get_rectangles_reply_t> input(xcb_shape_get_rectangles_reply(
        display().get(), xcb_shape_get_rectangles(display().get(), window, XCB_SHAPE_SK_INPUT),
        nullptr));
    EXPECT_EQ(xcb_shape_get_rectangles_rectangles_length(input.get()), 0);
    const XcbPointer<xcb_get_input_focus_reply_t> focus(
        xcb_get_input_focus_reply(display().get(), xcb_get_input_focus(display().get()), nullptr));
    EXPECT_NE(focus->focus, window);
}

TEST_F(Overlay, AClickAndTheWheelReachTheWindowBelow) {
    ASSERT_NO_FATAL_FAILURE(start());
    const xcb_window_t below = makeWindow({200, 200, 300, 300}, true);
    ASSERT_TRUE(overlayComesToTheTop());
    rig::Pointer pointer(display());
    ASSERT_TRUE(pointer.moveTo({300, 300}));
    const Deadline deadline(kPatience);
    for (const std::uint8_t button : {std::uint8_t{1}, rig::kWheelUp, rig::kWheelDown}) {
        ASSERT_TRUE(pointer.press(button) && pointer.release(button));
        bool pressed = false;
        while (!pressed) {
            const auto event = display().waitForEvent(deadline);
            ASSERT_TRUE(event) << "no press of button " << int{button} << " arrived";
            const auto& press = reinterpret_cast<xcb_button_press_event_t&>(*event);
            pressed = (event->response_type & 0x7f) == XCB_BUTTON_PRESS && press.event == below &&
                      press.detail == button;
        }
    }
}

// Whoever drags something asks the server which window it would be dropped on.
TEST_F(Overlay, ADropFindsTheWindowBelowAMarker) {
    ASSERT_NO_FATAL_FAILURE(start({{"colorTracking", false}}));
    const xcb_window_t below = makeWindow({200, 200, 300, 300}, true);
    ASSERT_TRUE(overlayComesToTheTop());
    const auto windowAt = [&](std::int16_t x, std::int16_t y) {
        const XcbPointer<xcb_translate_coordinates_reply_t> reply(xcb_translate_coordinates_reply(
            display().get(),
            xcb_translate_coordinates(display().get(), display().root(), display().root(), x, y),
            nullptr));
        return reply ? reply->child : XCB_NONE;
    };
    const std::uint32_t bare = at(capture(), 300, 300);
    touch().begin(0, {300, 300});
    captureUntil([&](const Bitmap& screen) { return at(screen, 300, 300) != bare; }, "a marker");
    EXPECT_EQ(windowAt(300, 300), below);
    touch().end(0);
}

TEST_F(Overlay, ATouchReachesTheWindowBelowAsAnEmulatedClick) {
    ASSERT_NO_FATAL_FAILURE(start());
    const xcb_window_t below = makeWindow({200, 200, 300, 300}, true);
    ASSERT_TRUE(overlayComesToTheTop());
    touch().begin(0, {300, 300});
    const Deadline deadline(kPatience);
    bool pressed = false;
    while (!pressed) {
        const auto event = display().waitForEvent(deadline);
        ASSERT_TRUE(event) << "no button press arrived";
        pressed = (event->response_type & 0x7f) == XCB_BUTTON_PRESS &&
                  reinterpret_cast<xcb_button_press_event_t&>(*event).event == below;
    }
    touch().end(0);
}

TEST_F(Overlay, StaysAboveWindowsThatComeLaterAreRaisedOrFillTheScreen) {
    ASSERT_NO_FATAL_FAILURE(start());
    const xcb_window_t first = makeWindow({100, 100, 200, 200}, true);
    ASSERT_TRUE(overlayComesToTheTop());
    const xcb_window_t full = makeWindow({0, 0, kScreen.width, kScreen.height}, true);
    ASSERT_TRUE(overlayComesToTheTop());
    for (const xcb_window_t window : {first, full, first}) {
        const std::uint32_t above = XCB_STACK_MODE_ABOVE;
        xcb_configure_window(display().get(), window, XCB_CONFIG_WINDOW_STACK_MODE, &above);
        xcb_flush(display().get());
        ASSERT_TRUE(overlayComesToTheTop());
    }
}

TEST_F(Overlay, ATouchShowsAMarkerCentredUnderTheFingerAndALiftTakesItAway) {
    ASSERT_NO_FATAL_FAILURE(start(kPlain));
    EXPECT_TRUE(isClean(capture()));
    touch().begin(0, {400, 300});
    // Full size: 55 points wide, blended with what lies below.
    const auto isFull = [](const Bitmap& s) {
        return !isBackground(at(s, 400 - 26, 300)) && !isBackground(at(s, 400 + 26, 300)) &&
               !isBackground(at(s, 400, 300 - 26)) && !isBackground(at(s, 400, 300 + 26));
    };
    const Bitmap full = captureUntil(isFull, "the marker in its full size");
    for (const auto& [x, y] :
         {std::pair{400 - 29, 300}, {400 + 29, 300}, {400, 300 - 29}, {400, 300 + 29}}) {
        EXPECT_TRUE(isBackground(at(full, x, y)));
    }
    // Grey 2/3 at 0.55 over the background 20 40 60.
    const std::uint32_t middle = at(full, 400, 300);
    const std::array<double, 3> expected{0.55 * 170 + 0.45 * 0x20, 0.55 * 170 + 0.45 * 0x40,
                                         0.55 * 170 + 0.45 * 0x60};
    for (unsigned i = 0; i < 3; ++i) {
        EXPECT_NEAR((middle >> (16 - 8 * i)) & 0xffU, expected[i], 2);
    }
    touch().end(0);
    untilClean();
}

TEST_F(Overlay, TheCentreOfMassOfAMarkerLiesWithinHalfAPixelOfTheContact) {
    ASSERT_NO_FATAL_FAILURE(start({{"colorTracking", false}, {"colorBorderWidth", 0.0}}));
    for (const Point place : {Point{100.25, 100.75}, Point{1200, 50}, Point{640.5, 690}}) {
        touch().begin(0, place);
        Point seen;
        captureUntil(
            [&](const Bitmap& s) {
                seen = centreOfMass(s);
                return std::abs(seen.x - place.x) <= 0.5 && std::abs(seen.y - place.y) <= 0.5;
            },
            "the marker under the contact");
        EXPECT_NEAR(seen.x, place.x, 0.5);
        EXPECT_NEAR(seen.y, place.y, 0.5);
        touch().end(0);
        untilClean();
    }
}

TEST_F(Overlay, TenFingersShowTenMarkersAndAllOfThemGo) {
    ASSERT_NO_FATAL_FAILURE(start(kPlain));
    for (unsigned i = 0; i < 10; ++i) touch().begin(i, {60.0 + 110 * i, 200.0 + 30 * i});
    captureUntil(
        [](const Bitmap& s) {
            for (int i = 0; i < 10; ++i) {
                if (isBackground(at(s, 60 + 110 * i, 200 + 30 * i))) return false;
            }
            return true;
        },
        "ten markers");
    for (unsigned i = 0; i < 10; ++i) touch().end(i);
    untilClean();
}

TEST_F(Overlay, AMovingFingerLeavesATrailThatFades) {
    ASSERT_NO_FATAL_FAILURE(start({{"colorAnimDuration", 3.0}}));
    touch().begin(0, {200, 300});
    for (int x = 210; x <= 600; x += 10) touch().update(0, {static_cast<double>(x), 300});
    captureUntil(
        [](const Bitmap& s) {
            return !isBackground(at(s, 600, 300)) && !isBackground(at(s, 400, 300));
        },
        "marker and trail");
    captureUntil(
        [](const Bitmap& s) {
            return !isBackground(at(s, 600, 300)) && isBackground(at(s, 400, 300));
        },
        "the marker without its trail");
    touch().end(0);
    untilClean();
}

TEST_F(Overlay, AReloadChangesTheNextMarker) {
    ASSERT_NO_FATAL_FAILURE(start(kPlain));
    writeSettings({{"colorTracking", false},
                   {"colorSize", 140.0},
                   {"colorAlpha", 1.0},
                   {"fillColor", PropertyArray{1.0, 0.0, 0.0, 1.0}}});
    postNotification(SKAVLO_RUN_DIRECTORY "/notify", "com.oxbrel.skavlo.reload");
    EXPECT_TRUE(touchUntilMarkerIs(0xffff0000));
}

TEST_F(Overlay, EmojiAndStarAreDrawnInColour) {
    ASSERT_NO_FATAL_FAILURE(start({{"displayMode", 2},
                                   {"emojiString", "🍎"},
                                   {"emojiAlpha", 1.0},
                                   {"emojiSize", 150.0},
                                   {"emojiTracking", false}}));
    touch().begin(0, {400, 300});
    const auto isRed = [](std::uint32_t pixel) {
        return (pixel >> 16U & 0xffU) > 150 && (pixel >> 8U & 0xffU) < 100 && (pixel & 0xffU) < 100;
    };
    captureUntil([&](const Bitmap& s) { return isRed(at(s, 400, 310)); }, "a red apple");
    touch().end(0);
    untilClean();
    writeSettings({{"displayMode", 1}, {"imageAlpha", 1.0}, {"imageTracking", false}});
    postNotification(SKAVLO_RUN_DIRECTORY "/notify", "com.oxbrel.skavlo.reload");
    EXPECT_TRUE(touchUntilMarkerIs(0xffffcc00));
}

TEST_F(Overlay, ForceHideShowsNothing) {
    ASSERT_NO_FATAL_FAILURE(start({{"forceHide", true}}));
    touch().begin(0, {400, 300});
    ASSERT_TRUE(touch().waitForSync(Deadline(kPatience)));
    // A marker would be there within the first of these.
    constexpr int kPictures = 20;
    for (int i = 0; i < kPictures; ++i) ASSERT_TRUE(isClean(capture()));
    touch().end(0);
}

TEST_F(Overlay, WithoutACompositorTheWindowIsCutToTheMarkers) {
    writeSettings(kPlain);
    ASSERT_NO_FATAL_FAILURE(startServer());
    ASSERT_NO_FATAL_FAILURE(startOverlay());
    EXPECT_TRUE(isClean(capture()));
    touch().begin(0, {400, 300});
    const Bitmap screen = captureUntil(
        [](const Bitmap& s) { return !isBackground(at(s, 400 - 25, 300)); }, "the marker");
    EXPECT_TRUE(isBackground(at(screen, 400 - 30, 300)));
    EXPECT_NEAR(at(screen, 400, 300) & 0xffU, 170, 2);
    // More often than there are refreshes in its popping in.
    int from = 400;
    for (int i = 0; i < 10; ++i) {
        const int to = 810 - from;
        const int side = to > from ? 25 : -25;
        touch().update(0, {static_cast<double>(to), 300});
        captureUntil(
            [&](const Bitmap& s) {
                return !isBackground(at(s, to + side, 300)) &&
                       isBackground(at(s, from - side, 300));
            },
            "the marker, and nothing where it was");
        from = to;
    }
    touch().end(0);
    untilClean();
}

TEST_F(Overlay, ACompositorMayComeAndGoAndComeAgain) {
    writeSettings(kPlain);
    ASSERT_NO_FATAL_FAILURE(startServer());
    ASSERT_NO_FATAL_FAILURE(startOverlay());
    touch().begin(0, {400, 300});
    const auto opaque = [](const Bitmap& s) { return (at(s, 400, 300) & 0xffU) >= 168; };
    const auto blended = [](const Bitmap& s) {
        return !isBackground(at(s, 400, 300)) && (at(s, 400, 300) & 0xffU) < 160 &&
               at(s, 10, 10) == kBackground;
    };
    captureUntil(opaque, "an opaque marker");
    for (int i = 0; i < 2; ++i) {
        ASSERT_NO_FATAL_FAILURE(startCompositor());
        captureUntil(blended, "a blended marker");
        compositor_.reset();
        captureUntil([&](const Bitmap& s) { return opaque(s) && at(s, 10, 10) == kBackground; },
                     "an opaque marker again");
    }
    touch().end(0);
    untilClean();
}

TEST_F(Overlay, FollowsTheScreensSize) {
    constexpr PixelSize kPortrait{600, 700};
    writeSettings(kPlain);
    ASSERT_NO_FATAL_FAILURE(startServer({.sizes = {kScreen, kPortrait}}));
    ASSERT_NO_FATAL_FAILURE(startCompositor());
    ASSERT_NO_FATAL_FAILURE(startOverlay());
    for (const PixelSize size : {kPortrait, kScreen}) {
        ASSERT_TRUE(server_->setSize(size));
        touch().begin(0, {550, 600});
        int reports = 0;
        captureUntil(
            [&](const Bitmap& s) {
                // So many pictures are a recording, whose begin takes the markers of fingers that
                // rest.
                touch().update(0, {550.0 + reports++ % 2, 600});
                return s.size == size && !isBackground(at(s, 550, 600)) &&
                       !isBackground(at(s, 550 + 25, 600)) && isBackground(at(s, 550 - 30, 600));
            },
            "the marker under the finger");
        touch().end(0);
        captureUntil([&](const Bitmap& s) { return s.size == size && isClean(s); }, "nothing left");
    }
}

TEST_F(Overlay, TakesItsScaleFromTheFontResolution) {
    ASSERT_NO_FATAL_FAILURE(startServer());
    ASSERT_NO_FATAL_FAILURE(setFontResolution(192));
    writeSettings(kPlain);
    ASSERT_NO_FATAL_FAILURE(startCompositor());
    ASSERT_NO_FATAL_FAILURE(startOverlay());
    touch().begin(0, {400, 300});
    const Bitmap screen =
        captureUntil([](const Bitmap& s) { return !isBackground(at(s, 400 - 53, 300)); },
                     "a marker twice as wide");
    EXPECT_TRUE(isBackground(at(screen, 400 - 57, 300)));
    touch().end(0);
    untilClean();
}

TEST_F(Overlay, OnAMachineWithoutATouchscreenThePointersButtonIsAContact) {
    writeSettings(kPlain);
    ASSERT_NO_FATAL_FAILURE(startServer({.sizes = {kScreen}, .touch = false}));
    ASSERT_NO_FATAL_FAILURE(startCompositor());
    ASSERT_NO_FATAL_FAILURE(startOverlay());
    const auto fake = [&](std::uint8_t type, std::uint8_t detail, std::int16_t x, std::int16_t y) {
        xcb_test_fake_input(display().get(), type, detail, 0, display().root(), x, y, 0);
        xcb_flush(display().get());
    };
    fake(XCB_MOTION_NOTIFY, 0, 500, 200);
    fake(XCB_BUTTON_PRESS, 1, 0, 0);
    untilMarkerAt(500, 200);
    fake(XCB_MOTION_NOTIFY, 0, 700, 400);
    captureUntil(
        [](const Bitmap& s) {
            return isBackground(at(s, 500, 200)) && !isBackground(at(s, 700, 400));
        },
        "the marker following the pointer");
    fake(XCB_BUTTON_RELEASE, 1, 0, 0);
    untilClean();
}

// Over the background, as a compositor blends them.
class OverlayLooks : public Overlay, public testing::WithParamInterface<LookCase> {
  protected:
    static bool shows(const Bitmap& screen, PixelPoint finger, const Spot& spot) {
        constexpr double kRounding = 2;  // levels
        const auto level = [](std::uint32_t pixel, unsigned i) {
            return (pixel >> (16 - 8 * i)) & 0xffU;
        };
        std::vector<Layer> layers{{level(kBackground, 0) / 255.0, level(kBackground, 1) / 255.0,
                                   level(kBackground, 2) / 255.0, 1}};
        layers.insert(layers.end(), spot.layers.begin(), spot.layers.end());
        const auto expected = blended(layers);
        const std::uint32_t pixel = at(screen, finger.x + spot.right, finger.y + spot.below);
        return std::ranges::all_of(std::array{0U, 1U, 2U}, [&](unsigned i) {
            return std::abs(level(pixel, i) - 255 * expected[i]) <= kRounding;
        });
    }
};

TEST_P(OverlayLooks, HaveTheColoursAndAlphasOfTheSettings) {
    // A trail that fades would show every alpha for a moment.
    PropertyDictionary settings = GetParam().settings;
    for (const char* trail : {"colorTracking", "imageTracking", "emojiTracking"}) {
        settings[trail] = false;
    }
    ASSERT_NO_FATAL_FAILURE(start(settings));
    constexpr PixelPoint kFinger{400, 300};
    touch().begin(0, {kFinger.x + 0.5, kFinger.y + 0.5});
    int reports = 0;
    captureUntil(
        [&](const Bitmap& screen) {
            // See FollowsTheScreensSize.
            touch().update(0, {kFinger.x + reports++ % 2 * 0.5, kFinger.y + 0.5});
            return std::ranges::all_of(
                GetParam().spots, [&](const Spot& spot) { return shows(screen, kFinger, spot); });
        },
        GetParam().name);
    touch().end(0);
    untilClean();
}

INSTANTIATE_TEST_SUITE_P(Of, OverlayLooks, testing::ValuesIn(lookCases()),
                         [](const auto& suite) { return std::string(suite.param.name); });

class OverlayOnAPoorServer : public Overlay, public testing::WithParamInterface<const char*> {};

TEST_P(OverlayOnAPoorServer, DrawsAndAnimatesAllTheSame) {
    writeSettings({{"colorAnimDuration", 0.25}});
    ASSERT_NO_FATAL_FAILURE(startServer({.sizes = {kScreen}, .withoutExtensions = {GetParam()}}));
    ASSERT_NO_FATAL_FAILURE(startCompositor());
    ASSERT_NO_FATAL_FAILURE(startOverlay());
    touch().begin(0, {200, 300});
    for (int x = 220; x <= 1000; x += 20) touch().update(0, {static_cast<double>(x), 300});
    captureUntil(
        [](const Bitmap& s) {
            return isBackground(at(s, 600, 300)) && !isBackground(at(s, 1000 - 25, 300));
        },
        "the marker in its full size, its trail faded");
    touch().end(0);
    untilClean();
}

INSTANTIATE_TEST_SUITE_P(Without, OverlayOnAPoorServer, testing::Values("MIT-SHM", "Present"),
                         [](const auto& suite) {
                             std::string name = suite.param;
                             std::erase(name, '-');
                             return name;
                         });

}  // namespace
}  // namespace skavlo
