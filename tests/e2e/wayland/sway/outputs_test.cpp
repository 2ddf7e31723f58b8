// The overlay and sway's outputs, which change and come.
#include <fcntl.h>
#include <gmock/gmock.h>

#include <fstream>
#include <string>

#include "tests/e2e/wayland/sway/sway_rig.h"

namespace skavlo {
namespace {

class SwayOutputs : public Sway {
  protected:
    // What the doctor says of the overlay's output, to the end of the line.
    std::string doctorsWord() {
        const std::string path = session().file("doctor");
        const rig::FileDescriptor output(
            open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600));
        auto doctor =
            rig::Child::start({{SKAVLO_DOCTOR}, rootEnvironment({"LC_ALL=C"}), {}, output.get()});
        EXPECT_TRUE(doctor) << doctor.error().message;
        EXPECT_TRUE(doctor->wait(rig::Deadline(std::chrono::seconds(40))));
        std::ifstream report(path);
        const std::string check = "ok    output    the markers lie on the output ";
        for (std::string line; std::getline(report, line);) {
            if (line.starts_with(check)) return line.substr(check.size());
        }
        return {};
    }
};

TEST_F(SwayOutputs, FollowsModeAndRotation) {
    ASSERT_NO_FATAL_FAILURE(startAll());
    if (IsSkipped()) return;
    ASSERT_NO_FATAL_FAILURE(change("output HEADLESS-1 mode --custom 800x600"));
    captureUntil(
        [](const Bitmap& p) {
            return p.size == PixelSize{800, 600} && isClean(p);
        },
        "the smaller screen");
    ASSERT_NO_FATAL_FAILURE(expectMarker(0.25, 0.5, {200, 300}, kMarkerWidth));
    // Clockwise: the panel's left edge shows the picture's bottom.
    ASSERT_NO_FATAL_FAILURE(change("output HEADLESS-1 transform 90"));
    captureUntil(
        [](const Bitmap& p) {
            return p.size == PixelSize{600, 800} && isClean(p);
        },
        "the turned screen");
    ASSERT_NO_FATAL_FAILURE(expectMarker(0.25, 0.2, {120, 600}, kMarkerWidth));
    ASSERT_NO_FATAL_FAILURE(change("output HEADLESS-1 transform 180"));
    captureUntil(
        [](const Bitmap& p) {
            return p.size == PixelSize{800, 600} && isClean(p);
        },
        "the screen upside down");
    ASSERT_NO_FATAL_FAILURE(expectMarker(0.25, 0.2, {600, 480}, kMarkerWidth));
}

TEST_F(SwayOutputs, MovesToTheTouchscreensOutputWhenThatIsPluggedIn) {
    writeSettings(kWithoutTrail);
    ASSERT_NO_FATAL_FAILURE(startSway());
    if (IsSkipped()) return;
    ASSERT_NO_FATAL_FAILURE(plugTouchscreen({"WL_OUTPUT=HEADLESS-2"}));
    ASSERT_NO_FATAL_FAILURE(startOverlay());
    ASSERT_NO_FATAL_FAILURE(expectMarker(0.25, 0.5, {320, 360}, kMarkerWidth, "HEADLESS-1"));
    ASSERT_NO_FATAL_FAILURE(change("create_output"));
    ASSERT_NO_FATAL_FAILURE(change("output HEADLESS-2 mode --custom 1000x500"));
    ASSERT_NO_FATAL_FAILURE(expectMarker(0.25, 0.5, {250, 250}, kMarkerWidth, "HEADLESS-2"));
    EXPECT_TRUE(isClean(capture("HEADLESS-1")));
}

TEST_F(SwayOutputs, LiesOnTheOutputThatTheTouchscreenIsMappedTo) {
    writeSettings(kWithoutTrail);
    ASSERT_NO_FATAL_FAILURE(startSway());
    if (IsSkipped()) return;
    ASSERT_NO_FATAL_FAILURE(command("create_output"));
    ASSERT_NO_FATAL_FAILURE(command("output HEADLESS-2 mode --custom 1000x500 position 1280 0"));
    ASSERT_NO_FATAL_FAILURE(command("focus output HEADLESS-2"));
    ASSERT_NO_FATAL_FAILURE(startClient());
    ASSERT_EQ(client().windowSize(), (PixelSize{1000, 500}));
    ASSERT_NO_FATAL_FAILURE(plugTouchscreen({"WL_OUTPUT=HEADLESS-2"}));
    ASSERT_NO_FATAL_FAILURE(startOverlay());
    ASSERT_NO_FATAL_FAILURE(expectMarker(0.25, 0.5, {250, 250}, kMarkerWidth, "HEADLESS-2"));
    EXPECT_EQ(doctorsWord(), "HEADLESS-2");
}

// Nothing maps it.
TEST_F(SwayOutputs, LiesOnTheFirstOutputOtherwise) {
    writeSettings(kWithoutTrail);
    ASSERT_NO_FATAL_FAILURE(startSway());
    if (IsSkipped()) return;
    ASSERT_NO_FATAL_FAILURE(command("create_output"));
    ASSERT_NO_FATAL_FAILURE(plugTouchscreen());
    ASSERT_NO_FATAL_FAILURE(startOverlay());
    ASSERT_NO_FATAL_FAILURE(expectMarker(0.25, 0.5, {320, 360}, kMarkerWidth, "HEADLESS-1"));
    EXPECT_EQ(doctorsWord(), "HEADLESS-1");
}

}  // namespace
}  // namespace skavlo
