// What mutter's own picture of its screen shows where a marker is, with windows below that fill the
// screen and with others.
#include <gmock/gmock.h>

#include <array>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <optional>
#include <span>
#include <string>

#include "tests/e2e/wayland/extended/cast_session.h"
#include "tests/e2e/wayland/extended/mutter_rig.h"

namespace skavlo {
namespace {

using rig::Deadline;

constexpr std::uint32_t kMarker = 0xff2030;
constexpr std::uint32_t kFullWindow = 0x108040;
constexpr std::uint32_t kOrdinaryWindow = 0x806010;

// A window that mutter manages.
class XWindow {
  public:
    enum class Kind { ordinary, fullScreen };
    XWindow(rig::Display& display, PixelRect rect, std::uint32_t colour, Kind kind)
        : display_(display), window_(xcb_generate_id(display.get())) {
        auto* connection = display_.get();
        xcb_create_window(connection, XCB_COPY_FROM_PARENT, window_, display_.root(),
                          static_cast<std::int16_t>(rect.x), static_cast<std::int16_t>(rect.y),
                          static_cast<std::uint16_t>(rect.width),
                          static_cast<std::uint16_t>(rect.height), 0, XCB_WINDOW_CLASS_INPUT_OUTPUT,
                          XCB_COPY_FROM_PARENT, XCB_CW_BACK_PIXEL, &colour);
        // Where the user wants it: the first of the size hints, of which there are 18.
        constexpr std::uint32_t kUserPosition = 1;
        const std::array<std::uint32_t, 18> hints{kUserPosition};
        set(XCB_ATOM_WM_NORMAL_HINTS, XCB_ATOM_WM_SIZE_HINTS, hints);
        if (kind == Kind::fullScreen) {
            const std::array<std::uint32_t, 1> state{display_.atom("_NET_WM_STATE_FULLSCREEN")};
            set(display_.atom("_NET_WM_STATE"), XCB_ATOM_ATOM, state);
        }
        xcb_map_window(connection, window_);
        display_.sync();
    }
    ~XWindow() {
        xcb_destroy_window(display_.get(), window_);
        display_.sync();
    }
    XWindow(const XWindow&) = delete;
    XWindow& operator=(const XWindow&) = delete;

  private:
    void set(xcb_atom_t property, xcb_atom_t type, std::span<const std::uint32_t> values) {
        constexpr std::uint8_t kBits = 32;
        xcb_change_property(display_.get(), XCB_PROP_MODE_REPLACE, window_, property, type, kBits,
                            static_cast<std::uint32_t>(values.size()), values.data());
    }

    rig::Display& display_;
    xcb_window_t window_;
};

class MutterPicture : public Mutter {
  protected:
    void SetUp() override {
        writeSettings({{"colorTracking", false},
                       {"fillColor", PropertyArray{1, 0x20 / 255.0, 0x30 / 255.0, 1}},
                       {"colorAlpha", 1.0},
                       {"colorBorderWidth", 0.0}});
        ASSERT_NO_FATAL_FAILURE(startMutter());
        if (IsSkipped()) return;
        ASSERT_NO_FATAL_FAILURE(startOverlay());
        ASSERT_NO_FATAL_FAILURE(startLooking());
        ASSERT_NO_FATAL_FAILURE(untilSeen(kBackground, kBackground)) << "nothing but the client";
    }

    // Two places: under the finger, and beside its marker.
    void startLooking() {
        auto casts = CastSession::start(session(), Deadline(kPatience));
        ASSERT_TRUE(casts) << casts.error().message;
        casts_ = std::move(*casts);
        auto cast = casts_->offer(SKAVLO_MUTTER_CAST, Deadline(kPatience));
        ASSERT_TRUE(cast) << cast.error().message;
        cast_ = std::move(*cast);
        auto viewer = casts_->look(cast_->node, {{326, 400}, {390, 400}});
        ASSERT_TRUE(viewer) << viewer.error().message;
        viewer_ = std::move(*viewer);
    }
    // A finger that is down moves meanwhile: when the overlay hears of the cast, it takes the
    // markers of those that rest.
    void untilSeen(std::uint32_t under, std::uint32_t beside) {
        std::array<char, 32> wanted{};
        std::snprintf(wanted.data(), wanted.size(), "%06x %06x ", under & 0xffffffU,
                      beside & 0xffffffU);
        constexpr std::chrono::milliseconds kBetweenMoves(20);
        const Deadline deadline(kPatience);
        for (int i = 0; seen_ != wanted.data(); ++i) {
            ASSERT_FALSE(deadline.passed())
                << "never seen: " << wanted.data() << ", but at last: " << seen_ << '\n'
                << complaints();
            if (down_) moveTo(i % 2 == 0 ? 0.26 : 0.25, 0.5);
            if (const auto line = viewer_->nextLine(Deadline(kBetweenMoves))) seen_ = *line;
        }
    }
    void putDown() {
        touchAt(0.25, 0.5);
        down_ = true;
    }
    void expectMarkerAbove(std::uint32_t window) {
        ASSERT_NO_FATAL_FAILURE(untilSeen(window, window)) << "the window below";
        putDown();
        ASSERT_NO_FATAL_FAILURE(untilSeen(kMarker, window)) << "the marker above it";
        lift();
        down_ = false;
        ASSERT_NO_FATAL_FAILURE(untilSeen(window, window)) << "the window alone again";
    }

  private:
    std::optional<CastSession> casts_;
    std::optional<CastSession::Cast> cast_;
    std::optional<CastSession::Viewer> viewer_;
    std::string seen_;  // at last
    bool down_ = false;
};

TEST_F(MutterPicture, HasTheMarkerAboveAFullScreenWaylandWindow) {
    ASSERT_NO_FATAL_FAILURE(expectMarkerAbove(kBackground));
}

TEST_F(MutterPicture, HasTheMarkerAboveAFullScreenXWindow) {
    const XWindow window(display(), {0, 0, 200, 200}, kFullWindow, XWindow::Kind::fullScreen);
    ASSERT_NO_FATAL_FAILURE(expectMarkerAbove(kFullWindow));
}

TEST_F(MutterPicture, HasTheMarkerAboveAnOrdinaryXWindow) {
    const XWindow window(display(), {100, 200, 500, 400}, kOrdinaryWindow, XWindow::Kind::ordinary);
    ASSERT_NO_FATAL_FAILURE(expectMarkerAbove(kOrdinaryWindow));
}

// The window comes while the finger is down.
TEST_F(MutterPicture, KeepsTheMarkerAboveAFullScreenXWindowThatComesLater) {
    putDown();
    ASSERT_NO_FATAL_FAILURE(untilSeen(kMarker, kBackground));
    const XWindow window(display(), {0, 0, 200, 200}, kFullWindow, XWindow::Kind::fullScreen);
    ASSERT_NO_FATAL_FAILURE(untilSeen(kMarker, kFullWindow));
}

}  // namespace
}  // namespace skavlo
