// Programs that read a real X server's screen.
#include <xcb/shm.h>

#include <csignal>
#include <optional>

#include "platform/linux/capture/x_grab_source.h"
#include "tests/unit/capture/loop_fixture.h"
#include "tools/rig/child.h"
#include "tools/rig/screenshot.h"
#include "tools/rig/x_server.h"

namespace skavlo {
namespace {

constexpr PixelSize kScreen{1280, 720};

class XGrabs : public LoopFixture {
  protected:
    void startServer(const rig::XServerOptions& options = {.sizes = {kScreen}, .touch = false}) {
        auto started = rig::XServer::start(options);
        ASSERT_TRUE(started) << started.error().message;
        server.emplace(std::move(*started));
        server->enterEnvironment();
        auto connected = server->connect();
        ASSERT_TRUE(connected) << connected.error().message;
        display.emplace(std::move(*connected));
    }
    Result<std::unique_ptr<XGrabSource>> tryToOpen() {
        return XGrabSource::open(loop, {.connect = [] { return xcb_connect(nullptr, nullptr); },
                                        .screenSize = [] { return kScreen; }});
    }
    void open() {
        auto opened = tryToOpen();
        ASSERT_TRUE(opened) << opened.error().message;
        source = std::move(*opened);
        source->setChangeHandler([this] { ++changes; });
    }
    void start() {
        ASSERT_NO_FATAL_FAILURE(startServer());
        ASSERT_NO_FATAL_FAILURE(open());
    }

    static void grab(const rig::Display& client, xcb_drawable_t drawable, PixelSize size) {
        const auto cookie = xcb_get_image(client.get(), XCB_IMAGE_FORMAT_Z_PIXMAP, drawable, 0, 0,
                                          static_cast<std::uint16_t>(size.width),
                                          static_cast<std::uint16_t>(size.height), ~0U);
        const rig::XcbPointer<xcb_get_image_reply_t> reply(
            xcb_get_image_reply(client.get(), cookie, nullptr));
        ASSERT_NE(reply, nullptr);
    }
    void grab(int times, PixelSize size = kScreen) {
        for (int i = 0; i < times; ++i) grab(*display, display->root(), size);
    }
    xcb_pixmap_t makePixmap() {
        const xcb_pixmap_t pixmap = xcb_generate_id(display->get());
        xcb_create_pixmap(display->get(), display->screen().root_depth, pixmap, display->root(),
                          kScreen.width, kScreen.height);
        EXPECT_TRUE(display->sync());
        return pixmap;
    }
    // ffmpeg, for as many pictures, or until it is killed.
    rig::Child record(const std::vector<std::string>& input,
                      const std::vector<std::string>& output) {
        std::vector<std::string> arguments{"ffmpeg", "-nostdin", "-loglevel",
                                           "error",  "-f",       "x11grab"};
        arguments.insert(arguments.end(), input.begin(), input.end());
        arguments.insert(arguments.end(), {"-i", server->displayName()});
        arguments.insert(arguments.end(), output.begin(), output.end());
        arguments.insert(arguments.end(), {"-f", "null", "-"});
        auto child = rig::Child::start({arguments, server->environment(), {}, -1});
        EXPECT_TRUE(child) << child.error().message;
        return std::move(*child);
    }
    bool waitFor(bool captures) {
        return runUntil([&] { return source->captures() == captures; });
    }
    // Nor was the source asleep: another client's recording is seen.
    void expectNothingSoFar() {
        constexpr double kLongEnough = 0.3;  // seconds to look at what was read so far
        bool over = false;
        const auto timer = loop.scheduledTimer(kLongEnough, false, [&] { over = true; });
        ASSERT_TRUE(runUntil([&] { return over; }));
        EXPECT_EQ(changes, 0);
        auto other = server->connect();
        ASSERT_TRUE(other) << other.error().message;
        for (int i = 0; i < 3; ++i) grab(*other, other->root(), kScreen);
        EXPECT_TRUE(waitFor(true));
        EXPECT_EQ(changes, 1);
        EXPECT_TRUE(waitFor(false));
        EXPECT_EQ(changes, 2);
    }

    std::optional<rig::XServer> server;
    std::optional<rig::Display> display;
    std::unique_ptr<XGrabSource> source;
    int changes = 0;
};

TEST_F(XGrabs, AnFfmpegRecordingCapturesUntilItIsKilled) {
    ASSERT_NO_FATAL_FAILURE(start());
    rig::Child recorder = record({"-framerate", "25", "-video_size", "1280x720"}, {});
    EXPECT_TRUE(waitFor(true));
    recorder.signal(SIGKILL);
    EXPECT_TRUE(waitFor(false));
    EXPECT_EQ(changes, 2);
}

TEST_F(XGrabs, ARecordingThatRunsAlreadyIsSeen) {
    ASSERT_NO_FATAL_FAILURE(startServer());
    const rig::Child recorder = record({"-framerate", "25", "-video_size", "1280x720"}, {});
    ASSERT_NO_FATAL_FAILURE(open());
    EXPECT_TRUE(waitFor(true));
}

TEST_F(XGrabs, AScreenshotDoesNot) {
    ASSERT_NO_FATAL_FAILURE(start());
    rig::Child screenshot = record({"-video_size", "1280x720"}, {"-frames:v", "1"});
    ASSERT_TRUE(screenshot.wait(rig::Deadline(kPatience)));
    grab(2);
    expectNothingSoFar();
}

TEST_F(XGrabs, WithoutSharedMemoryAsWell) {
    ASSERT_NO_FATAL_FAILURE(
        startServer({.sizes = {kScreen}, .touch = false, .withoutExtensions = {"MIT-SHM"}}));
    ASSERT_NO_FATAL_FAILURE(open());
    grab(3);
    EXPECT_TRUE(waitFor(true));
}

TEST_F(XGrabs, SmallPartsDoNotCount) {
    ASSERT_NO_FATAL_FAILURE(start());
    grab(10, {320, 200});
    // The rig's own pictures are made of such parts.
    for (int i = 0; i < 5; ++i) ASSERT_TRUE(rig::captureRoot(*display));
    expectNothingSoFar();
}

TEST_F(XGrabs, WhatAClientHasDrawnAsideItMayReadBack) {
    ASSERT_NO_FATAL_FAILURE(start());
    const xcb_pixmap_t pixmap = makePixmap();
    for (int i = 0; i < 10; ++i) grab(*display, pixmap, kScreen);
    expectNothingSoFar();
}

TEST_F(XGrabs, WhatAClientHasDrawnAsideItsOtherConnectionMayReadToo) {
    ASSERT_NO_FATAL_FAILURE(start());
    const xcb_pixmap_t pixmap = makePixmap();
    auto other = server->connect();
    ASSERT_TRUE(other) << other.error().message;
    for (int i = 0; i < 10; ++i) grab(*other, pixmap, kScreen);
    expectNothingSoFar();
}

TEST_F(XGrabs, AnotherClientsWindowCounts) {
    ASSERT_NO_FATAL_FAILURE(start());
    const xcb_window_t window = xcb_generate_id(display->get());
    xcb_create_window(display->get(), XCB_COPY_FROM_PARENT, window, display->root(), 0, 0,
                      kScreen.width, kScreen.height, 0, XCB_WINDOW_CLASS_INPUT_OUTPUT,
                      XCB_COPY_FROM_PARENT, 0, nullptr);
    xcb_map_window(display->get(), window);
    ASSERT_TRUE(display->sync());
    auto other = server->connect();
    ASSERT_TRUE(other) << other.error().message;
    for (int i = 0; i < 3; ++i) grab(*other, window, kScreen);
    EXPECT_TRUE(waitFor(true));
}

TEST_F(XGrabs, ACapturingServersEndEndsIt) {
    ASSERT_NO_FATAL_FAILURE(start());
    grab(3);
    EXPECT_TRUE(waitFor(true));
    server->process().signal(SIGKILL);
    EXPECT_TRUE(waitFor(false));
}

TEST_F(XGrabs, WithoutAServerItSaysSo) {
    setenv("DISPLAY", ":4711", 1);
    EXPECT_FALSE(tryToOpen());
}

TEST_F(XGrabs, WithoutTheExtensionItSaysSo) {
    // Xorg switches the two off together.
    ASSERT_NO_FATAL_FAILURE(
        startServer({.sizes = {kScreen}, .touch = false, .withoutExtensions = {"RECORD"}}));
    auto opened = tryToOpen();
    ASSERT_FALSE(opened);
    EXPECT_NE(opened.error().message.find("RECORD"), std::string::npos);
}

}  // namespace
}  // namespace skavlo
