// The overlay on a headless platform, with a rasteriser that answers when it is told to.
#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "overlay/hid_input.h"
#include "overlay/overlay_app_delegate.h"
#include "platform/headless/headless_display.h"
#include "platform/headless/headless_run_loop.h"
#include "platform/headless/headless_system.h"
#include "platform/linux/plist/plist_property_lists.h"

namespace skavlo {

class HeldRasterizer final : public Rasterizer {
  public:
    struct Request {
        std::string what;  // path or text
        int box;
        double fontPixels;  // of a text
        Completion completion;
    };

    void rasterizeImageFile(const std::string& path, int box, Completion completion) override {
        requests.push_back({path, box, 0, std::move(completion)});
    }
    void rasterizeText(const std::string& utf8, int box, double fontPixels,
                       Completion completion) override {
        requests.push_back({utf8, box, fontPixels, std::move(completion)});
    }
    // Answers the oldest open request with a plain square, or with nothing.
    void answer(bool withPicture = true) {
        const Request request = std::move(requests.at(answered++));
        const auto count = static_cast<std::size_t>(request.box) * request.box;
        request.completion(withPicture ? std::make_shared<Bitmap>(
                                             Bitmap{{request.box, request.box},
                                                    std::vector<std::uint32_t>(count, 0xff0000ffU)})
                                       : nullptr);
    }

    std::vector<Request> requests;
    std::size_t answered = 0;
};

class OverlayFixture : public testing::Test {
  protected:
    static constexpr double kMillisecond = 1e-3;

    ~OverlayFixture() override {
        g_skv_overlayAppDelegate.reset();
        g_skv_hidClient = nullptr;
        g_skv_hidRegistered = false;
        g_skv_hidEnableTime = 0;
        g_skv_hardware_suppressed = false;
        g_skv_heartbeatView.reset();
    }

    // As the start-up does: delegate, input client, launch.
    void launch() {
        g_skv_overlayAppDelegate = std::make_unique<OverlayAppDelegate>(services(), windowServer);
        g_skv_hidClient = &hidClient;
        skv_enable_hid_callback();
        g_skv_overlayAppDelegate->applicationDidFinishLaunchingWithOptions();
        loop.runPosted();
    }

    OverlayServices services() {
        return {loop,   loop,         files,      propertyLists, notifications,
                screen, captureState, rasterizer, directory};
    }

    void writeSettings(const PropertyDictionary& settings) {
        files.writeAtomically(directory.settingsFile(), propertyLists.serialize(settings));
    }
    void reload(const PropertyDictionary& settings) {
        writeSettings(settings);
        canvas().skv_reloadSettings();
        loop.runPosted();
    }

    TouchCanvasViewController& canvas() { return *g_skv_overlayAppDelegate->canvasVC; }
    MarkerScene& scene() { return canvas().skv_containerView; }
    std::size_t copies() {
        std::size_t count = 0;
        for (const Generation& g : scene().generations()) count += g.copies.size();
        return count;
    }
    std::size_t liveMarkers() { return canvas().skv_markerViews.size(); }

    void advance(double seconds) {
        loop.advanceTo(loop.mach_absolute_time() + static_cast<MachTime>(seconds * 1e9));
    }
    // Lets time pass at 60 refreshes a second.
    void play(double seconds) {
        for (double passed = 0; passed < seconds; passed += 1.0 / 60) {
            advance(1.0 / 60);
            windowServer.refresh();
            loop.runPosted();
        }
    }

    HidEvent parent(std::int64_t touch, std::vector<HidEvent> children = {}) {
        HidEvent event;
        event.type = kHidEventTypeDigitizer;
        event.timeStamp = loop.mach_absolute_time();
        event.touch = touch;
        event.children = std::move(children);
        return event;
    }
    static HidEvent child(std::int64_t index, std::int64_t touch, double x = 100, double y = 100) {
        HidEvent event;
        event.type = kHidEventTypeDigitizer;
        event.index = index;
        event.touch = touch;
        event.x = x;
        event.y = y;
        return event;
    }
    void deliver(const HidEvent& event) {
        hidClient.deliver(event);
        loop.runPosted();
    }

    HeadlessRunLoop loop;
    HeadlessFiles files;
    PlistPropertyLists propertyLists;
    HeadlessNotifications notifications{loop};
    HeadlessScreen screen{{390, 844}, 1};
    HeadlessCaptureState captureState;
    HeadlessWindowServer windowServer{screen};
    HeadlessHidClient hidClient{loop};
    HeldRasterizer rasterizer;
    SettingsDirectory directory{"/library/"};
};

}  // namespace skavlo
