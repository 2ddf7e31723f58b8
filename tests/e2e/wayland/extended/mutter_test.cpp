// Clicks and touches on mutter while the overlay shows markers.
#include <gmock/gmock.h>
#include <linux/input-event-codes.h>

#include <algorithm>

#include "tests/e2e/wayland/extended/bus_client.h"
#include "tests/e2e/wayland/extended/cast_session.h"
#include "tests/e2e/wayland/extended/mutter_rig.h"

namespace skavlo {
namespace {

using rig::Deadline;

constexpr int kTimes = 30;
constexpr std::chrono::seconds kTouchPatience{3};
constexpr const char* kService = "org.gnome.Mutter.RemoteDesktop";
constexpr const char* kSessionInterface = "org.gnome.Mutter.RemoteDesktop.Session";
constexpr const char* kCast = "org.gnome.Mutter.ScreenCast";
constexpr const char* kCastSessionInterface = "org.gnome.Mutter.ScreenCast.Session";

// Mutter injects the input of a session of its remote desktop.
class MutterInput : public Mutter {
  protected:
    void startAll() {
        writeSettings(kWithoutTrail);
        ASSERT_NO_FATAL_FAILURE(startMutter());
        if (IsSkipped()) return;
        auto bus = BusClient::connect(session());
        ASSERT_TRUE(bus) << bus.error().message;
        bus_ = std::move(*bus);
        inputPath_ = pathFrom(
            {kService, "/org/gnome/Mutter/RemoteDesktop", kService, "CreateSession"}, nullptr);
        ASSERT_FALSE(inputPath_.empty());
    }
    void call(const char* method, GVariant* arguments) {
        const auto done = bus_->call({kService, inputPath_, kSessionInterface, method}, arguments);
        ASSERT_TRUE(done) << method << ": " << done.error().message;
    }
    // The path in the answer; empty: the call failed.
    std::string pathFrom(const BusClient::Method& method, GVariant* arguments) {
        auto made = bus_->call(method, arguments);
        EXPECT_TRUE(made) << method.name << ": " << made.error().message;
        if (!made) return {};
        const char* path = nullptr;
        g_variant_get(made->get(), "(&o)", &path);
        return path;
    }

    // A pointer over the middle of the marker.
    void startPointer() {
        ASSERT_NO_FATAL_FAILURE(call("Start", nullptr));
        // From wherever it is into the corner and on.
        ASSERT_NO_FATAL_FAILURE(
            call("NotifyPointerMotionRelative", g_variant_new("(dd)", -5000.0, -5000.0)));
        ASSERT_NO_FATAL_FAILURE(
            call("NotifyPointerMotionRelative", g_variant_new("(dd)", 320.0, 400.0)));
        ASSERT_TRUE(
            client().waitUntil([&] { return client().pointerEntered(); }, Deadline(kPatience)))
            << "the pointer did not come";
    }
    void expectClick() {
        const std::size_t before = client().presses().size();
        for (const bool pressed : {true, false}) {
            ASSERT_NO_FATAL_FAILURE(
                call("NotifyPointerButton", g_variant_new("(ib)", BTN_LEFT, pressed ? 1 : 0)));
        }
        ASSERT_TRUE(client().waitUntil([&] { return client().presses().size() > before; },
                                       Deadline(kPatience)))
            << "the click did not arrive";
    }

    void startTouches() {
        auto casts = CastSession::start(session(), Deadline(kPatience));
        ASSERT_TRUE(casts) << casts.error().message;
        casts_ = std::move(*casts);
        ASSERT_NO_FATAL_FAILURE(castTheScreen());
        ASSERT_NO_FATAL_FAILURE(call("Start", nullptr));
        // Clients hear of the touchscreen when there is a first touch.
        touchWindow();
        ASSERT_TRUE(client().waitUntil([&] { return client().hasTouch(); }, Deadline(kPatience)));
        liftFromWindow();
        client().roundTrip();
    }
    // Touches have places in a cast that belongs to the same session.
    void castTheScreen() {
        auto answer = bus_->call({kService, inputPath_, "org.freedesktop.DBus.Properties", "Get"},
                                 g_variant_new("(ss)", kSessionInterface, "SessionId"));
        ASSERT_TRUE(answer) << answer.error().message;
        const Variant boxed(g_variant_get_child_value(answer->get(), 0));
        const Variant name(g_variant_get_variant(boxed.get()));
        GVariantBuilder options;
        g_variant_builder_init(&options, G_VARIANT_TYPE("a{sv}"));
        g_variant_builder_add(&options, "{sv}", "remote-desktop-session-id", name.get());
        const std::string cast =
            pathFrom({kCast, "/org/gnome/Mutter/ScreenCast", kCast, "CreateSession"},
                     g_variant_new("(a{sv})", &options));
        screen_ = pathFrom({kCast, cast, kCastSessionInterface, "RecordMonitor"},
                           g_variant_new("(sa{sv})", "", nullptr));
    }
    void touchWindow() {
        call("NotifyTouchDown", g_variant_new("(sudd)", screen_.c_str(), 0U, 640.0, 400.0));
    }
    void liftFromWindow() { call("NotifyTouchUp", g_variant_new("(u)", 0U)); }
    bool touchArrives() {
        const auto begun = [&] {
            return std::ranges::count(client().touches(), WindowTouch::Kind::down,
                                      &WindowTouch::kind);
        };
        const auto before = begun();
        touchWindow();
        const bool arrived =
            client().waitUntil([&] { return begun() > before; }, Deadline(kTouchPatience));
        liftFromWindow();
        return arrived;
    }

    // Returns while the marker grows or when it has just gone.
    void showOrHideMarker(bool show) {
        if (show) {
            touchAt(0.25, 0.5);
        } else {
            lift();
        }
        const Deadline deadline(kPatience);
        while ((windowPixel({320, 400}) != 0) != show) {
            ASSERT_FALSE(deadline.passed()) << "no marker came or went";
        }
    }

  private:
    std::optional<BusClient> bus_;
    std::string inputPath_;
    std::optional<CastSession> casts_;
    std::string screen_;
};

// Clicks of a pointer that is over the window already: they arrive without renewed input shapes
// too, for mutter chooses the window below a pointer only when something comes or goes there.
TEST_F(MutterInput, ClicksOnTheWindowBelowGoOnArriving) {
    ASSERT_NO_FATAL_FAILURE(startAll());
    if (IsSkipped()) return;
    ASSERT_NO_FATAL_FAILURE(startPointer());
    ASSERT_NO_FATAL_FAILURE(expectClick()) << "before the overlay runs";
    ASSERT_NO_FATAL_FAILURE(startOverlay());
    for (int i = 0; i < kTimes; ++i) {
        ASSERT_NO_FATAL_FAILURE(showOrHideMarker(i % 2 == 0));
        ASSERT_NO_FATAL_FAILURE(expectClick()) << "number " << i;
    }
}

// Without renewed input shapes none of them arrives. With them one is lost that falls between a
// frame and the next shape: of 300 that begin like here 1 to 11 were, the more the busier the
// machine.
TEST_F(MutterInput, TouchesReachTheWindowBelowWhileMarkersComeAndGo) {
    ASSERT_NO_FATAL_FAILURE(startAll());
    if (IsSkipped()) return;
    ASSERT_NO_FATAL_FAILURE(startTouches());
    ASSERT_TRUE(touchArrives()) << "before the overlay runs";
    ASSERT_NO_FATAL_FAILURE(startOverlay());
    int arrived = 0;
    for (int i = 0; i < kTimes; ++i) {
        ASSERT_NO_FATAL_FAILURE(showOrHideMarker(i % 2 == 0));
        arrived += touchArrives() ? 1 : 0;
    }
    EXPECT_GE(arrived, kTimes * 4 / 5);
}

}  // namespace
}  // namespace skavlo
