// The rig itself: what every other test with a screen relies on.
#include <gtest/gtest.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>
#include <xcb/xinput.h>

#include <csignal>
#include <filesystem>

#include "tools/rig/compositor.h"
#include "tools/rig/overlay_window.h"
#include "tools/rig/screenshot.h"
#include "tools/rig/x_server.h"

namespace skavlo::rig {
namespace {

constexpr std::chrono::seconds kPatience(20);
constexpr const char* kSkavloClass = "skavlo";

class RigTest : public testing::Test {
  protected:
    void SetUp() override {
        if (access("/usr/lib/xorg/Xorg", X_OK) != 0) {
            GTEST_SKIP() << "Xorg is not installed";
        }
    }

    static void requireCompositor() {
        if (access("/usr/bin/picom", X_OK) != 0) {
            GTEST_SKIP() << "picom is not installed";
        }
    }

    void start(const XServerOptions& options = {}) {
        auto server = XServer::start(options);
        ASSERT_TRUE(server) << server.error().message;
        server_.emplace(std::move(*server));
        auto display = server_->connect();
        ASSERT_TRUE(display) << display.error().message;
        display_.emplace(std::move(*display));
    }

    struct RawTouch {
        int type = 0;
        double x = 0;
        double y = 0;
    };

    void selectRawTouches() {
        const XcbPointer<xcb_input_xi_query_version_reply_t> version(
            xcb_input_xi_query_version_reply(
                display_->get(), xcb_input_xi_query_version(display_->get(), 2, 4), nullptr));
        struct {
            xcb_input_event_mask_t head;
            std::uint32_t mask;
        } const mask = {{XCB_INPUT_DEVICE_ALL_MASTER, 1},
                        XCB_INPUT_XI_EVENT_MASK_RAW_TOUCH_BEGIN |
                            XCB_INPUT_XI_EVENT_MASK_RAW_TOUCH_UPDATE |
                            XCB_INPUT_XI_EVENT_MASK_RAW_TOUCH_END};
        xcb_input_xi_select_events(display_->get(), display_->root(), 1, &mask.head);
        ASSERT_TRUE(display_->sync());
    }

    RawTouch nextTouch() {
        const auto event = display_->waitForEvent(Deadline(kPatience));
        if (!event || (event->response_type & 0x7F) != XCB_GE_GENERIC) {
            ADD_FAILURE() << "no touch came";
            return {};
        }
        // Raw touches have the layout of raw buttons.
        const auto* raw = reinterpret_cast<const xcb_input_raw_button_press_event_t*>(event.get());
        const auto* values = xcb_input_raw_button_press_axisvalues_raw(raw);
        return {raw->event_type, static_cast<double>(values[0].integral),
                static_cast<double>(values[1].integral)};
    }

    // A mapped window of the whole screen: 24 bits deep, or 32 with premultiplied colour.
    xcb_window_t mapWindow(std::uint8_t depth, std::uint32_t colour, const std::string& name) {
        auto depths = xcb_screen_allowed_depths_iterator(&display_->screen());
        while (depths.data->depth != depth || depths.data->visuals_len == 0) {
            xcb_depth_next(&depths);
        }
        const xcb_visualid_t visual = xcb_depth_visuals_iterator(depths.data).data->visual_id;
        const xcb_colormap_t colours = xcb_generate_id(display_->get());
        xcb_create_colormap(display_->get(), XCB_COLORMAP_ALLOC_NONE, colours, display_->root(),
                            visual);
        const std::uint32_t values[] = {colour, 0, 1, colours};
        const xcb_window_t window = xcb_generate_id(display_->get());
        const PixelSize size = display_->rootSize();
        xcb_create_window(
            display_->get(), depth, window, display_->root(), 0, 0,
            static_cast<std::uint16_t>(size.width), static_cast<std::uint16_t>(size.height), 0,
            XCB_WINDOW_CLASS_INPUT_OUTPUT, visual,
            XCB_CW_BACK_PIXEL | XCB_CW_BORDER_PIXEL | XCB_CW_OVERRIDE_REDIRECT | XCB_CW_COLORMAP,
            values);
        const std::string property = "instance" + std::string(1, '\0') + name + '\0';
        xcb_change_property(display_->get(), XCB_PROP_MODE_REPLACE, window, XCB_ATOM_WM_CLASS,
                            XCB_ATOM_STRING, 8, static_cast<std::uint32_t>(property.size()),
                            property.data());
        xcb_map_window(display_->get(), window);
        EXPECT_TRUE(display_->sync());
        return window;
    }

    std::uint32_t centrePixel() {
        auto picture = captureRoot(*display_);
        return picture ? pixelAt(*picture, {picture->size.width / 2, picture->size.height / 2}) : 0;
    }

    std::optional<XServer> server_;
    std::optional<Display> display_;
};

TEST_F(RigTest, deliversTouchesAsRawEvents) {
    start();
    selectRawTouches();
    TouchDevice& device = *server_->touch();
    ASSERT_TRUE(device.begin(1, {640, 180}));
    const RawTouch begin = nextTouch();
    EXPECT_EQ(begin.type, XCB_INPUT_RAW_TOUCH_BEGIN);
    EXPECT_EQ(begin.x, 32768);
    EXPECT_EQ(begin.y, 16384);
    ASSERT_TRUE(device.update(1, {5000, -3}));  // held to the screen
    const RawTouch update = nextTouch();
    EXPECT_EQ(update.type, XCB_INPUT_RAW_TOUCH_UPDATE);
    EXPECT_EQ(update.x, 65535);
    EXPECT_EQ(update.y, 0);
    ASSERT_TRUE(device.end(1));
    EXPECT_EQ(nextTouch().type, XCB_INPUT_RAW_TOUCH_END);
}

TEST_F(RigTest, touchesWithTenContactsAtATime) {
    start();
    selectRawTouches();
    for (unsigned id = 0; id < 10; ++id) {
        ASSERT_TRUE(server_->touch()->begin(id, {100.0 * id, 10}));
    }
    EXPECT_TRUE(server_->touch()->waitForSync(Deadline(kPatience)));
    for (int i = 0; i < 10; ++i) {
        EXPECT_EQ(nextTouch().type, XCB_INPUT_RAW_TOUCH_BEGIN);
    }
}

TEST_F(RigTest, worksWithoutATouchDevice) {
    start({.touch = false});
    EXPECT_EQ(server_->touch(), nullptr);
    EXPECT_EQ(display_->rootSize(), (PixelSize{1280, 720}));
}

TEST_F(RigTest, changesItsSize) {
    start({.sizes = {{1280, 720}, {720, 1280}, {801, 601}}});
    selectRawTouches();
    for (const PixelSize size : {PixelSize{720, 1280}, PixelSize{801, 601}}) {
        auto changed = server_->setSize(size);
        ASSERT_TRUE(changed) << changed.error().message;
        EXPECT_EQ(display_->rootSize(), size);
    }
    ASSERT_TRUE(server_->touch()->begin(1, {400.5, 300.5}));
    EXPECT_EQ(nextTouch().x, 32768);
    auto unknown = server_->setSize({1024, 1024});
    ASSERT_FALSE(unknown);
    EXPECT_EQ(unknown.error().message, "the X server has no mode 1024x1024");
}

TEST_F(RigTest, admitsOnlyThoseWhoKnowTheSecret) {
    start();
    setenv("XAUTHORITY", "/dev/null", 1);
    EXPECT_FALSE(Display::connect(server_->displayName()));
    server_->enterEnvironment();
    EXPECT_TRUE(Display::connect(""));
}

TEST_F(RigTest, capturesWhatTheScreenShows) {
    start();
    mapWindow(24, 0x204060, "other");
    EXPECT_EQ(centrePixel(), 0xFF204060);
}

TEST_F(RigTest, blendsTranslucentWindows) {
    requireCompositor();
    if (IsSkipped()) {
        return;
    }
    start();
    auto compositor = Compositor::start(*server_);
    ASSERT_TRUE(compositor) << compositor.error().message;
    mapWindow(24, 0x4080C0, "below");
    mapWindow(32, 0x80400000, "above");
    const Deadline deadline(kPatience);
    const auto blended = [&] {
        const std::uint32_t pixel = centrePixel();
        // 0x40 + 0x40 / 2, 0x80 / 2, 0xC0 / 2, each with one step of rounding
        return std::abs(static_cast<int>(pixel >> 16 & 0xFF) - 0x60) <= 1 &&
               std::abs(static_cast<int>(pixel >> 8 & 0xFF) - 0x40) <= 1 &&
               std::abs(static_cast<int>(pixel & 0xFF) - 0x60) <= 1;
    };
    bool seen = blended();
    while (!seen && !deadline.passed()) {
        seen = blended();
    }
    EXPECT_TRUE(seen) << std::hex << centrePixel();
}

TEST_F(RigTest, findsTheOverlaysWindowAmongOthers) {
    start();
    mapWindow(24, 0, kSkavloClass);
    mapWindow(32, 0, "other");
    EXPECT_EQ(findOverlayWindow(*display_), std::nullopt);
    const xcb_window_t window = mapWindow(32, 0, kSkavloClass);
    EXPECT_EQ(waitForOverlayWindow(*display_, Deadline(kPatience), {}), window);
}

// Starts a rig, tells its process ids and waits to be killed.
[[noreturn]] void runDoomedRig(int output) {
    auto server = XServer::start({});
    if (server) {
        auto compositor = Compositor::start(*server);
        const pid_t pids[] = {server->process().pid(),
                              compositor ? compositor->process().pid() : 0};
        if (write(output, pids, sizeof pids) == sizeof pids) {
            pause();
        }
    }
    _exit(1);
}

TEST_F(RigTest, leavesNothingBehindWhenItsProcessIsKilled) {
    requireCompositor();
    if (IsSkipped()) {
        return;
    }
    const std::string directory =
        testing::TempDir() + "skavlo-doomed-rig-" + std::to_string(getpid());
    std::filesystem::create_directory(directory);
    setenv("TMPDIR", directory.c_str(), 1);
    int ends[2];
    ASSERT_EQ(pipe(ends), 0);
    const pid_t doomed = fork();
    if (doomed == 0) {
        runDoomedRig(ends[1]);
    }
    close(ends[1]);
    pid_t pids[2] = {0, 0};
    ASSERT_EQ(read(ends[0], pids, sizeof pids), static_cast<ssize_t>(sizeof pids));
    for (const pid_t pid : pids) {
        ASSERT_GT(pid, 0);
    }
    const FileDescriptor server(static_cast<int>(syscall(SYS_pidfd_open, pids[0], 0)));
    const FileDescriptor compositor(static_cast<int>(syscall(SYS_pidfd_open, pids[1], 0)));
    ASSERT_TRUE(server.valid() && compositor.valid());
    kill(doomed, SIGKILL);
    waitpid(doomed, nullptr, 0);
    EXPECT_TRUE(waitReadable({server.get()}, Deadline(kPatience))) << "the X server lives";
    EXPECT_TRUE(waitReadable({compositor.get()}, Deadline(kPatience))) << "the compositor lives";
    EXPECT_TRUE(std::filesystem::is_empty(directory));
    std::filesystem::remove_all(directory);
}

TEST_F(RigTest, tellsWhyTheServerDoesNotStart) {
    auto server = XServer::start({.sizes = {{100'000, 100'000}}});
    ASSERT_FALSE(server);
    EXPECT_EQ(server.error().message.rfind("the X server did not start\n", 0), 0U)
        << server.error().message;
}

}  // namespace
}  // namespace skavlo::rig
