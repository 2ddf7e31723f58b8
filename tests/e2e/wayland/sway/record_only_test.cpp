// The overlay that shows markers only while a recorder of Wayland compositors runs.
#include <gmock/gmock.h>

#include <csignal>
#include <fstream>

#include "platform/linux/capture/process_events.h"
#include "tests/e2e/wayland/sway/sway_rig.h"

namespace skavlo {
namespace {

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
    bool shows() {
        client().roundTrip();
        return !isClean(capture());
    }
};

TEST_F(SwayRecordOnly, MarkersShowAndAreRecordedWhileARecorderRuns) {
    ASSERT_NO_FATAL_FAILURE(startAll("", {{"onlyShowInRecord", true}, {"colorTracking", false}}));
    if (IsSkipped()) return;
    touchAt(0.25, 0.5);
    const auto seen = [this] { return shows(); };
    ASSERT_NO_FATAL_FAILURE(expectHidden(seen));
    for (int round = 0; round < 2; ++round) {
        const std::string path = session().file("video" + std::to_string(round));
        rig::Child recorder = record(path);
        ASSERT_NO_FATAL_FAILURE(moveUntilShown(true, seen));
        ASSERT_NO_FATAL_FAILURE(moveUntilShown(true, [&] {
            const auto picture = lastRecorded(path);
            return picture && (markerAt({320, 360}, kMarkerWidth)(*picture) ||
                               markerAt({332.8, 360}, kMarkerWidth)(*picture));
        })) << "in the recording";
        EXPECT_TRUE(recorder.running());
        recorder.signal(SIGKILL);
        ASSERT_NO_FATAL_FAILURE(moveUntilShown(false, seen));
        ASSERT_NO_FATAL_FAILURE(expectHidden(seen));
    }
}

}  // namespace
}  // namespace skavlo
