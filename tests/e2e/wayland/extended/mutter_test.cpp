// Clicks on mutter, through the overlay.
#include <gmock/gmock.h>
#include <linux/input-event-codes.h>

#include "tests/e2e/wayland/extended/bus_client.h"
#include "tests/e2e/wayland/extended/mutter_rig.h"

namespace skavlo {
namespace {

using rig::Deadline;

constexpr const char* kService = "org.gnome.Mutter.RemoteDesktop";
constexpr const char* kSessionInterface = "org.gnome.Mutter.RemoteDesktop.Session";

class MutterClicks : public Mutter {
  protected:
    void startPointer() {
        auto bus = BusClient::connect(session());
        ASSERT_TRUE(bus) << bus.error().message;
        bus_ = std::move(*bus);
        auto made =
            bus_->call({kService, "/org/gnome/Mutter/RemoteDesktop", kService, "CreateSession"});
        if (!made) GTEST_SKIP() << "mutter lets nobody click: " << made.error().message;
        const char* path = nullptr;
        g_variant_get(made->get(), "(&o)", &path);
        pointerPath_ = path;
        ASSERT_NO_FATAL_FAILURE(pointer("Start", nullptr));
        // From wherever it is into the corner and on to the middle of the marker.
        ASSERT_NO_FATAL_FAILURE(
            pointer("NotifyPointerMotionRelative", g_variant_new("(dd)", -5000.0, -5000.0)));
        ASSERT_NO_FATAL_FAILURE(
            pointer("NotifyPointerMotionRelative", g_variant_new("(dd)", 320.0, 400.0)));
        ASSERT_TRUE(
            client().waitUntil([&] { return client().pointerEntered(); }, Deadline(kPatience)))
            << "the pointer did not come";
    }
    void pointer(const char* method, GVariant* arguments) {
        const auto done =
            bus_->call({kService, pointerPath_, kSessionInterface, method}, arguments);
        ASSERT_TRUE(done) << method << ": " << done.error().message;
    }
    void expectClick() {
        const std::size_t before = client().presses().size();
        for (const bool pressed : {true, false}) {
            ASSERT_NO_FATAL_FAILURE(
                pointer("NotifyPointerButton", g_variant_new("(ib)", BTN_LEFT, pressed ? 1 : 0)));
        }
        ASSERT_TRUE(client().waitUntil([&] { return client().presses().size() > before; },
                                       Deadline(kPatience)))
            << "the click did not arrive";
    }

    std::optional<BusClient> bus_;
    std::string pointerPath_;
};

// Clicks of a pointer that is over the window already: they arrive without renewed input shapes
// too, for mutter chooses the window below a pointer only when something comes or goes there.
TEST_F(MutterClicks, TheOverlayIsAnXWindowAndClicksOnTheWindowBelowGoOnArriving) {
    writeSettings(kWithoutTrail);
    ASSERT_NO_FATAL_FAILURE(startMutter());
    if (IsSkipped()) return;
    ASSERT_NO_FATAL_FAILURE(startPointer());
    if (IsSkipped()) return;
    ASSERT_NO_FATAL_FAILURE(expectClick()) << "before the overlay runs";
    ASSERT_NO_FATAL_FAILURE(startOverlay());
    constexpr std::size_t kClicks = 30;
    for (std::size_t i = 0; i < kClicks; ++i) {
        const bool shows = i % 2 == 0;
        if (shows) {
            touchAt(0.25, 0.5);
        } else {
            lift();
        }
        const Deadline deadline(kPatience);
        while ((windowPixel({320, 400}) != 0) != shows) {
            ASSERT_FALSE(deadline.passed()) << "no marker came or went";
        }
        ASSERT_NO_FATAL_FAILURE(expectClick()) << "number " << i;
    }
}

}  // namespace
}  // namespace skavlo
