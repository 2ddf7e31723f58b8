// The overlay that shows markers only while a recorder of Wayland compositors runs.
#include <gmock/gmock.h>

#include <csignal>
#include <fstream>

#include "platform/linux/capture/process_events.h"
#include "tests/e2e/wayland/sway/sway_rig.h"

namespace skavlo {
namespace {

using rig::Deadline;

// Pictures are grim's, which copies the screen as recorders do but is none.
class SwayRecordOnly : public Sway {
  protected:
    void SetUp() override {
        if (const auto reason = whyNotRunnable("wf-recorder")) GTEST_SKIP() << *reason;
        if (auto events = ProcessEvents::open(); !events)
            GTEST_SKIP() << "the kernel does not tell of processes: " << events.error().message;
    }
    // Writes whole pictures, one behind the other.
    rig::Child record(const std::string& path) {
        auto child = session().start({"wf-recorder", "--codec", "rawvideo", "--muxer", "rawvideo",
                                      "--pixel-format", "bgr0", "-f", path});
        EXPECT_TRUE(child) << child.error().message;
        return std::move(*child);
    }
    // The last whole one.
    [[nodiscard]] static std::optional<Bitmap> lastRecorded(const std::string& path) {
        Bitmap picture{kScreen, std::vector<std::uint32_t>(static_cast<std::size_t>(kScreen.width) *
                                                           kScreen.height)};
        const std::size_t bytes = picture.pixels.size() * sizeof(std::uint32_t);
        std::ifstream file(path, std::ios::binary | std::ios::ate);
        const auto pictures = static_cast<std::size_t>(file.tellg()) / bytes;
        if (!file || pictures == 0) return std::nullopt;
        file.seekg(static_cast<std::streamoff>((pictures - 1) * bytes));
        file.read(reinterpret_cast<char*>(picture.pixels.data()),
                  static_cast<std::streamsize>(bytes));
        for (std::uint32_t& pixel : picture.pixels) pixel |= 0xff000000;
        return picture;
    }
    // To and fro, as a finger that is down reports only while it moves.
    void move() {
        there_ = !there_;
        moveTo(there_ ? 0.5 : 0.25, 0.5);
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
            [&](const Bitmap& picture) {
                move();
                return picture.size == kScreen && isClean(picture) != shown;
            },
            shown ? "a marker" : "the background alone");
    }
    void moveUntilRecorded(const std::string& path) {
        const Deadline deadline(kPatience);
        while (true) {
            const auto picture = lastRecorded(path);
            if (picture && (markerAt({320, 360}, kMarkerWidth)(*picture) ||
                            markerAt({640, 360}, kMarkerWidth)(*picture)))
                return;
            ASSERT_FALSE(deadline.passed()) << "no marker is recorded";
            move();
        }
    }

  private:
    bool there_ = false;
};

TEST_F(SwayRecordOnly, MarkersShowAndAreRecordedWhileARecorderRuns) {
    ASSERT_NO_FATAL_FAILURE(startAll("", {{"onlyShowInRecord", true}, {"colorTracking", false}}));
    if (IsSkipped()) return;
    touchAt(0.25, 0.5);
    ASSERT_NO_FATAL_FAILURE(expectHidden());
    for (int round = 0; round < 2; ++round) {
        const std::string path = session().file("video" + std::to_string(round));
        rig::Child recorder = record(path);
        moveUntilShown(true);
        ASSERT_NO_FATAL_FAILURE(moveUntilRecorded(path));
        EXPECT_TRUE(recorder.running());
        recorder.signal(SIGKILL);
        moveUntilShown(false);
        ASSERT_NO_FATAL_FAILURE(expectHidden());
    }
}

}  // namespace
}  // namespace skavlo
