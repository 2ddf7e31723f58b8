// The real overlay that shows markers only while the screen is captured.
#include <csignal>

#include "tests/e2e/overlay/overlay_rig.h"

namespace skavlo {
namespace {

using rig::Deadline;

class RecordOnly : public OverlayRig {
  protected:
    // ffmpeg, until it is killed or has as many pictures.
    rig::Child record(const std::vector<std::string>& output = {}) {
        std::vector<std::string> arguments{
            "ffmpeg",     "-nostdin", "-loglevel",   "error",    "-f", "x11grab",
            "-framerate", "25",       "-video_size", "1280x720", "-i", server_->displayName()};
        arguments.insert(arguments.end(), output.begin(), output.end());
        arguments.insert(arguments.end(), {"-f", "null", "-"});
        auto child = rig::Child::start({arguments, server_->environment(), {}, -1});
        EXPECT_TRUE(child) << child.error().message;
        return std::move(*child);
    }
    void xrandr(std::vector<std::string> arguments) {
        arguments.insert(arguments.begin(), "xrandr");
        auto child = rig::Child::start({arguments, server_->environment(), {}, -1});
        ASSERT_TRUE(child) << child.error().message;
        EXPECT_EQ(child->wait(Deadline(kPatience)), 0);
    }
    // To and fro, as a finger that is down reports only while it moves.
    void move() {
        there_ = !there_;
        touch().update(0, {there_ ? 420.0 : 400.0, 300});
        ASSERT_TRUE(touch().waitForSync(Deadline(kPatience)));
    }
    void putFingerDown() {
        touch().begin(0, {400, 300});
        ASSERT_TRUE(touch().waitForSync(Deadline(kPatience)));
    }
    void expectHidden() {
        // A marker would be there within the first of these.
        constexpr int kPictures = 20;
        for (int i = 0; i < kPictures; ++i) {
            move();
            ASSERT_TRUE(isClean(capture()));
        }
    }
    void moveUntilShown(bool shown) {
        captureUntil(
            [&](const Bitmap& screen) {
                move();
                return isClean(screen) != shown;
            },
            shown ? "a marker" : "the background alone");
    }

  private:
    bool there_ = false;
};

TEST_F(RecordOnly, MarkersShowWhileARecorderRuns) {
    ASSERT_NO_FATAL_FAILURE(start({{"onlyShowInRecord", true}}));
    ASSERT_NO_FATAL_FAILURE(putFingerDown());
    ASSERT_NO_FATAL_FAILURE(expectHidden());
    for (int round = 0; round < 2; ++round) {
        rig::Child recorder = record();
        moveUntilShown(true);
        EXPECT_TRUE(recorder.running());
        recorder.signal(SIGKILL);
        moveUntilShown(false);
        ASSERT_NO_FATAL_FAILURE(expectHidden());
    }
}

TEST_F(RecordOnly, MarkersShowWhileTheScreenIsMirrored) {
    ASSERT_NO_FATAL_FAILURE(start({{"onlyShowInRecord", true}}));
    ASSERT_NO_FATAL_FAILURE(putFingerDown());
    ASSERT_NO_FATAL_FAILURE(xrandr({"--addmode", "DUMMY1", "1280x720"}));
    ASSERT_NO_FATAL_FAILURE(expectHidden());
    ASSERT_NO_FATAL_FAILURE(
        xrandr({"--output", "DUMMY1", "--mode", "1280x720", "--same-as", "DUMMY0"}));
    moveUntilShown(true);
    ASSERT_NO_FATAL_FAILURE(xrandr({"--output", "DUMMY1", "--off"}));
    moveUntilShown(false);
}

TEST_F(RecordOnly, AScreenshotChangesNothingARecordingClearsOnce) {
    ASSERT_NO_FATAL_FAILURE(start());
    ASSERT_NO_FATAL_FAILURE(putFingerDown());
    captureUntil([](const Bitmap& screen) { return !isClean(screen); }, "the marker");
    rig::Child screenshot = record({"-frames:v", "1"});
    ASSERT_EQ(screenshot.wait(Deadline(kPatience)), 0);
    constexpr int kPictures = 20;
    for (int i = 0; i < kPictures; ++i) ASSERT_FALSE(isClean(capture()));
    // The finger rests, so nothing makes its marker anew.
    const rig::Child recorder = record();
    captureUntil(isClean, "the marker's end");
}

TEST_F(RecordOnly, WhereNothingCanBeKnownMarkersStayHidden) {
    writeSettings({{"onlyShowInRecord", true}});
    // Without RECORD: ffmpeg goes unnoticed.
    ASSERT_NO_FATAL_FAILURE(startServer({.sizes = {kScreen}, .withoutExtensions = {"RECORD"}}));
    ASSERT_NO_FATAL_FAILURE(startCompositor());
    ASSERT_NO_FATAL_FAILURE(startOverlay());
    ASSERT_NO_FATAL_FAILURE(putFingerDown());
    rig::Child recorder = record({"-frames:v", "30"});
    while (recorder.running()) ASSERT_NO_FATAL_FAILURE(expectHidden());
}

}  // namespace
}  // namespace skavlo
