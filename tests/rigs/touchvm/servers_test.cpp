// Runs as root on a kernel with uinput. A window server and the overlay read the same touchscreen:
// what the window below is told, and what is to be seen.
#include <fcntl.h>
#include <gmock/gmock.h>
#include <unistd.h>

#include <cmath>
#include <filesystem>
#include <ostream>
#include <type_traits>

#include "tests/e2e/wayland/wayland_rig.h"
#include "tests/rigs/touchvm/markers.h"
#include "tests/rigs/touchvm/reads_device.h"
#include "tests/rigs/touchvm/uinput_touchscreen.h"
#include "tests/rigs/touchvm/x_touch_window.h"

namespace skavlo {

// NOLINTBEGIN(readability-identifier-naming): GoogleTest's name
static void PrintTo(WindowTouch::Kind kind, std::ostream* stream) {
    constexpr const char* kNames[] = {"down", "motion", "up"};
    *stream << kNames[static_cast<int>(kind)];
}

static void PrintTo(const WindowTouch& touch, std::ostream* stream) {
    PrintTo(touch.kind, stream);
    *stream << ' ' << touch.place.x << ',' << touch.place.y;
}

}  // namespace skavlo

namespace skavlo::test {

static void PrintTo(const Marker& marker, std::ostream* stream) {
    const PixelRect& bounds = marker.bounds;
    *stream << bounds.width << " x " << bounds.height << " at " << bounds.x << ',' << bounds.y
            << " of colour " << std::hex << marker.middle << std::dec;
}

// NOLINTEND(readability-identifier-naming)

namespace {

using rig::Deadline;
using testing::ElementsAre;
using testing::UnorderedElementsAre;
using enum WindowTouch::Kind;

// Xorg scales the device's places itself, and is a hundredth of a pixel off.
MATCHER_P3(IsTouch, kind, x, y, "") {
    constexpr double kTolerance = 0.1;
    return arg.kind == kind && std::abs(arg.place.x - x) <= kTolerance &&
           std::abs(arg.place.y - y) <= kTolerance;
}

constexpr PixelSize kScreenSize{UinputTouchscreen::kWidth / 2, UinputTouchscreen::kHeight / 2};

// Xorg with its libinput driver, a compositing manager and a window that takes touches.
class OnXorg : public OverlayRig {
  protected:
    void startAll() {
        if (!std::filesystem::exists("/usr/lib/xorg/modules/input/libinput_drv.so")) {
            GTEST_SKIP() << "xserver-xorg-input-libinput is not installed";
        }
        writeSettings(kWithoutTrail);
        ASSERT_NO_FATAL_FAILURE(
            startServer({.sizes = {kScreenSize}, .touch = false, .machineDevices = true}));
        auto connection = server_->connect();
        ASSERT_TRUE(connection) << connection.error().message;
        window_.emplace(std::move(*connection), kBackground);
        ASSERT_NO_FATAL_FAILURE(startCompositor());
        ASSERT_NO_FATAL_FAILURE(startOverlay());
    }
    XTouchWindow& window() { return *window_; }
    bool serverHasTouchscreen() { return window_->deviceEnabled(UinputTouchscreen::kName); }
    pid_t serverProcess() { return server_->process().pid(); }

  private:
    std::optional<XTouchWindow> window_;
};

// sway, which opens the devices through seatd, and a full-screen client.
class OnSway : public WaylandRig {
  protected:
    ~OnSway() override {
        session_.reset();  // before its seat goes
    }
    void startAll() {
        writeSettings(kWithoutTrail);
        ASSERT_NO_FATAL_FAILURE(startSeat());
        if (IsSkipped()) return;
        ASSERT_NO_FATAL_FAILURE(startSession(
            {.command = {"sway", "-c", "@/config"},
             .environment = {"WLR_BACKENDS=headless,libinput", "WLR_LIBINPUT_NO_DEVICES=1",
                             "WLR_RENDERER=pixman", "LIBSEAT_BACKEND=seatd"},
             .files = {{"config", "xwayland disable\noutput HEADLESS-1 mode " +
                                      std::to_string(kScreenSize.width) + "x" +
                                      std::to_string(kScreenSize.height) + "\n"}}}));
        if (IsSkipped()) return;
        ASSERT_NO_FATAL_FAILURE(startClient());
        ASSERT_NO_FATAL_FAILURE(startOverlay());
        captureUntil(isClean, "the background alone, at the start");
    }
    WaylandClient& window() { return client(); }
    bool serverHasTouchscreen() { return client().hasTouch(); }
    pid_t serverProcess() { return session().compositor().pid(); }

  private:
    // Returns once it takes clients.
    void startSeat() {
        if (const auto reason = whyNotRunnable("seatd")) GTEST_SKIP() << *reason;
        int ends[2];
        ASSERT_EQ(pipe2(ends, O_CLOEXEC), 0);
        const rig::FileDescriptor ready(ends[0]);
        const rig::FileDescriptor tellReady(ends[1]);
        auto seat = rig::Child::start(
            {{"seatd", "-u", "nobody", "-l", "error", "-n", std::to_string(tellReady.get())},
             {"SEATD_VTBOUND=0"},
             {tellReady.get()}});
        ASSERT_TRUE(seat) << seat.error().message;
        seat_ = std::move(*seat);
        ASSERT_EQ(rig::waitReadable({ready.get(), seat_->endDescriptor()}, Deadline(kPatience)),
                  ready.get())
            << "seatd does not start";
    }

    std::optional<rig::Child> seat_;
};

template <typename Server>
class SharedTouchscreen : public Server {
  protected:
    void startAll() {
        ASSERT_EQ(access("/dev/uinput", R_OK | W_OK), 0) << "runs in the virtual machine only";
        Server::startAll();
    }

    // Returns once server and overlay both read it.
    void plug() {
        screen_.emplace();
        ASSERT_TRUE(this->window().waitUntil([&] { return this->serverHasTouchscreen(); },
                                             Deadline(this->kPatience)))
            << "the server does not take the touchscreen";
        EXPECT_TRUE(readsDevice(this->serverProcess(), screen_->node()));
        constexpr std::chrono::milliseconds kLookAgain(5);
        const Deadline deadline(this->kPatience);
        while (!readsDevice(this->overlay_->pid(), screen_->node())) {
            ASSERT_FALSE(deadline.passed()) << "the overlay does not read the touchscreen";
            ASSERT_FALSE(rig::waitReadable({this->overlay_->endDescriptor()}, Deadline(kLookAgain)))
                << "the overlay ended";
        }
    }
    void unplug() {
        screen_.reset();
        ASSERT_TRUE(this->window().waitUntil([&] { return !this->serverHasTouchscreen(); },
                                             Deadline(this->kPatience)))
            << "the server keeps the touchscreen";
    }
    UinputTouchscreen& screen() { return *screen_; }

    // What the window is told from now on.
    void forgetTouches() { told_ = this->window().touches().size(); }
    std::vector<WindowTouch> nextTouches(std::size_t count) {
        const auto& all = this->window().touches();
        EXPECT_TRUE(this->window().waitUntil([&] { return all.size() >= told_ + count; },
                                             Deadline(this->kPatience)))
            << "the window was told of " << all.size() - told_ << " touches, not " << count;
        std::vector<WindowTouch> next(all.begin() + static_cast<std::ptrdiff_t>(told_), all.end());
        forgetTouches();
        return next;
    }

    void untilMarkersAt(const std::vector<Point>& places) {
        std::vector<Marker> seen;
        this->captureUntil(
            [&](const Bitmap& picture) {
                seen = markersIn(picture, kBackground);
                return picture.size == kScreenSize && areAt(seen, places, kBackground);
            },
            "one marker under each finger, and nothing else");
        EXPECT_TRUE(areAt(seen, places, kBackground)) << testing::PrintToString(seen);
    }
    void untilClean() {
        this->captureUntil(
            [](const Bitmap& picture) {
                return picture.size == kScreenSize && Server::isClean(picture);
            },
            "the background alone");
    }

  private:
    std::optional<UinputTouchscreen> screen_;
    std::size_t told_ = 0;
};

struct ServerName {
    template <typename Server>
    static std::string GetName(int) {  // NOLINT(readability-identifier-naming): GoogleTest's name
        return std::is_same_v<Server, OnXorg> ? "Xorg" : "Sway";
    }
};
using Servers = testing::Types<OnXorg, OnSway>;
TYPED_TEST_SUITE(SharedTouchscreen, Servers, ServerName);

TYPED_TEST(SharedTouchscreen, ATouchReachesTheWindowBelowAndHasOneMarkerUnderIt) {
    ASSERT_NO_FATAL_FAILURE(this->startAll());
    if (this->IsSkipped()) return;
    ASSERT_NO_FATAL_FAILURE(this->plug());
    this->screen().down(0, 480, 270);
    this->screen().sync();
    EXPECT_THAT(this->nextTouches(1), ElementsAre(IsTouch(down, 240, 135)));
    this->untilMarkersAt({{240, 135}});
    // By then a second report of the touch, by way of the server, would have shown as well.
    this->screen().move(0, 1200, 800);
    this->screen().sync();
    EXPECT_THAT(this->nextTouches(1), ElementsAre(IsTouch(motion, 600, 400)));
    this->untilMarkersAt({{600, 400}});
    this->screen().up(0);
    this->screen().sync();
    EXPECT_THAT(this->nextTouches(1), ElementsAre(IsTouch(up, 600, 400)));
    this->untilClean();
}

TYPED_TEST(SharedTouchscreen, TwoFingersHaveTwoMarkers) {
    ASSERT_NO_FATAL_FAILURE(this->startAll());
    if (this->IsSkipped()) return;
    ASSERT_NO_FATAL_FAILURE(this->plug());
    this->screen().down(0, 300, 200);
    this->screen().down(1, 1500, 900);
    this->screen().sync();
    EXPECT_THAT(this->nextTouches(2),
                UnorderedElementsAre(IsTouch(down, 150, 100), IsTouch(down, 750, 450)));
    this->untilMarkersAt({{150, 100}, {750, 450}});
    this->screen().move(0, 400, 300);
    this->screen().move(1, 1400, 800);
    this->screen().sync();
    EXPECT_THAT(this->nextTouches(2),
                UnorderedElementsAre(IsTouch(motion, 200, 150), IsTouch(motion, 700, 400)));
    this->untilMarkersAt({{200, 150}, {700, 400}});
    this->screen().up(0);
    this->screen().sync();
    EXPECT_THAT(this->nextTouches(1), ElementsAre(IsTouch(up, 200, 150)));
    this->untilMarkersAt({{700, 400}});
    this->screen().up(1);
    this->screen().sync();
    EXPECT_THAT(this->nextTouches(1), ElementsAre(IsTouch(up, 700, 400)));
    this->untilClean();
}

TYPED_TEST(SharedTouchscreen, UnpluggedMidTouchItsMarkerGoesAndPluggedAgainItWorksAgain) {
    ASSERT_NO_FATAL_FAILURE(this->startAll());
    if (this->IsSkipped()) return;
    ASSERT_NO_FATAL_FAILURE(this->plug());
    this->screen().down(0, 480, 270);
    this->screen().sync();
    EXPECT_THAT(this->nextTouches(1), ElementsAre(IsTouch(down, 240, 135)));
    this->untilMarkersAt({{240, 135}});
    ASSERT_NO_FATAL_FAILURE(this->unplug());
    this->untilClean();
    ASSERT_NO_FATAL_FAILURE(this->plug());
    this->forgetTouches();  // how the server ended the first one is its own affair
    this->screen().down(0, 960, 540);
    this->screen().sync();
    EXPECT_THAT(this->nextTouches(1), ElementsAre(IsTouch(down, 480, 270)));
    this->untilMarkersAt({{480, 270}});
    this->screen().up(0);
    this->screen().sync();
    EXPECT_THAT(this->nextTouches(1), ElementsAre(IsTouch(up, 480, 270)));
    this->untilClean();
}

}  // namespace
}  // namespace skavlo::test

// A case that was skipped is said by the status, for CTest sees all of them as one test.
int main(int count, char** arguments) {
    testing::InitGoogleTest(&count, arguments);
    const int status = RUN_ALL_TESTS();
    constexpr int kSkipped = 77;
    const bool skipped = testing::UnitTest::GetInstance()->skipped_test_count() > 0;
    return status == 0 && skipped ? kSkipped : status;
}
