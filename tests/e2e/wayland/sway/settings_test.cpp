// The settings application as a client of sway: its screen, and its switch under a pointer.
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>

#include "tests/e2e/wayland/sway/sway_rig.h"

namespace skavlo {
namespace {

using rig::Deadline;

constexpr PixelSize kPhone{390, 844};    // points
constexpr PixelPoint kSwitch{325, 246};  // the middle of the one that starts the overlay
constexpr PixelPoint kTrack{310, 246};   // covered by the thumb while it is off
constexpr PixelPoint kCard{250, 246};    // the row that it is in
constexpr std::uint32_t kWhite = 0xffffffff;
constexpr std::uint32_t kOn = 0xff34c759;

class SwaySettings : public Sway {
  protected:
    ~SwaySettings() override {
        if (std::filesystem::exists(pidFile())) runSkavlo("-exit");
    }
    // On an output of the size of a phone.
    void startSettings(int scale) {
        scale_ = scale;
        startSession({.command = {"sway", "-c", "@/config"},
                      .environment = {"WLR_BACKENDS=headless", "WLR_LIBINPUT_NO_DEVICES=1",
                                      "WLR_RENDERER=pixman"},
                      .files = {{"config", "default_border none\noutput HEADLESS-1 mode " +
                                               std::to_string(kPhone.width * scale) + "x" +
                                               std::to_string(kPhone.height * scale) + " scale " +
                                               std::to_string(scale) + "\n"}}});
        if (IsSkipped()) return;
        // The seat has a pointer from its first click on, and clients must know of it before
        // theirs.
        auto pointer = WaylandClient::connect(session().socket());
        ASSERT_TRUE(pointer) << pointer.error().message;
        pointer_ = std::move(*pointer);
        ASSERT_NO_FATAL_FAILURE(clickSwitch());
        // Without mocked devices, which are the overlay's affair.
        auto environment = session().environment();
        environment.insert(environment.end(), {"LD_PRELOAD", "DBUS_SESSION_BUS_ADDRESS"});
        auto started = rig::Child::start({{SKAVLO_EXECUTABLE}, environment, {}, -1});
        ASSERT_TRUE(started) << started.error().message;
        settings_ = std::move(*started);
        // White once the splash has faded.
        ASSERT_NO_FATAL_FAILURE(untilPixel(kCard, kWhite));
    }
    void untilPixel(PixelPoint place, std::uint32_t colour) {
        const Deadline deadline(kPatience);
        while (pixel(capture(), place) != colour) {
            ASSERT_TRUE(settings_->running());
            ASSERT_FALSE(deadline.passed()) << "never seen: the colour " << std::hex << colour;
        }
    }
    // `place` in points; 0: the screen has another size yet.
    [[nodiscard]] std::uint32_t pixel(const Bitmap& screen, PixelPoint place) const {
        if (screen.size != PixelSize{kPhone.width * scale_, kPhone.height * scale_}) return 0;
        return at(screen, place.x * scale_, place.y * scale_);
    }
    void clickSwitch() { ASSERT_TRUE(pointer_->click(kSwitch, kPhone)); }

    int scale_ = 1;
    std::optional<rig::Child> settings_;
    std::unique_ptr<WaylandClient> pointer_;
};

TEST_F(SwaySettings, AClickStartsTheOverlayAndAnotherEndsIt) {
    ASSERT_NO_FATAL_FAILURE(startSettings(1));
    if (IsSkipped()) return;
    ASSERT_FALSE(std::filesystem::exists(pidFile()));
    ASSERT_NO_FATAL_FAILURE(clickSwitch());
    ASSERT_NO_FATAL_FAILURE(untilPixel(kTrack, kOn));
    const Deadline started(kPatience);
    while (runSkavlo("-check") == 0) ASSERT_FALSE(started.passed()) << "no overlay runs";
    ASSERT_NO_FATAL_FAILURE(clickSwitch());
    const Deadline ended(kPatience);
    while (std::filesystem::exists(pidFile())) ASSERT_FALSE(ended.passed()) << "it does not end";
    EXPECT_TRUE(settings_->running());
}

// Text is as sharp as the screen. A picture of half the size, made larger, would have equal pairs
// of pixels, or, smoothed, no step of more than half of black to white.
TEST_F(SwaySettings, AtTwiceTheScaleItHasThePixelsOfTheScreen) {
    ASSERT_NO_FATAL_FAILURE(startSettings(2));
    if (IsSkipped()) return;
    const Bitmap screen = capture();
    const auto green = [&](int x, int y) { return int(at(screen, x, y) >> 8U & 0xffU); };
    constexpr int kMoreThanHalf = 150;
    int steps = 0;
    for (int y = 0; y < screen.size.height; ++y) {
        for (int x = 0; x + 1 < screen.size.width; x += 2) {
            if (std::abs(green(x, y) - green(x + 1, y)) > kMoreThanHalf) ++steps;
        }
    }
    EXPECT_GT(steps, 500);
}

}  // namespace
}  // namespace skavlo
