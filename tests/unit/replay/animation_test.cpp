// The animated picture, read by a program that is not ours.
#include <sys/stat.h>

#include <cstdlib>
#include <filesystem>

#include "tests/unit/replay/replay_fixture.h"

namespace skavlo {
namespace {

constexpr const char* kFfmpeg = "/usr/bin/ffmpeg";
constexpr const char* kFfprobe = "/usr/bin/ffprobe";

class AnimationTest : public ReplayTest {
  protected:
    void SetUp() override {
        if (!std::filesystem::exists(kFfmpeg) || !std::filesystem::exists(kFfprobe)) {
            GTEST_SKIP() << "ffmpeg and ffprobe are not installed";
        }
    }
    void make(const Words& more = {}) {
        Words arguments{"--frames", pathOf("f"), "--animation", pathOf("a.png"), "--fps", "25"};
        arguments.insert(arguments.end(), more.begin(), more.end());
        arguments.push_back(golden("drag.txt"));
        const Outcome run = replay(arguments);
        ASSERT_EQ(run.status, 0) << run.errors;
    }
    // The frames as pictures; a frame that repeats the one before is part of that in the animation.
    std::vector<Decoded> distinctFrames() {
        std::vector<Decoded> frames;
        for (int i = 1;; ++i) {
            char name[32];
            std::snprintf(name, sizeof name, "f/frame-%05d.png", i);
            const std::string png = read(pathOf(name));
            if (png.empty()) return frames;
            Decoded frame = decode(png);
            if (frames.empty() || !(frames.back() == frame)) frames.push_back(std::move(frame));
        }
    }
    void expectSameFrames(const std::vector<Decoded>& frames) {
        const Outcome run = this->run({kFfmpeg, "-v", "error", "-i", pathOf("a.png"), "-vsync", "0",
                                       "-f", "rawvideo", "-pix_fmt", "rgba", pathOf("raw")});
        ASSERT_EQ(run.status, 0) << run.errors;
        EXPECT_EQ(run.errors, "");
        const std::string raw = read(pathOf("raw"));
        const std::size_t each = frames.at(0).bytes.size();
        ASSERT_EQ(raw.size(), each * frames.size());
        for (std::size_t i = 0; i < frames.size(); ++i) {
            EXPECT_EQ(raw.substr(i * each, each),
                      std::string(frames[i].bytes.begin(), frames[i].bytes.end()))
                << "frame " << i + 1;
        }
    }
};

TEST_F(AnimationTest, holdsTheSameFramesWithTransparency) {
    make();
    const auto frames = distinctFrames();
    ASSERT_GT(frames.size(), 15U);
    const Outcome probe = run({kFfprobe, "-v", "error", "-count_frames", "-show_entries",
                               "stream=codec_name,width,height,pix_fmt,nb_read_frames", "-of",
                               "csv=p=0", pathOf("a.png")});
    EXPECT_EQ(probe.output, "apng,160,120,rgba," + std::to_string(frames.size()) + "\n");
    expectSameFrames(frames);
}

TEST_F(AnimationTest, isOpaqueBeforeABackground) {
    make({"--background", "336699"});
    const Outcome probe = run({kFfprobe, "-v", "error", "-show_entries", "stream=pix_fmt", "-of",
                               "csv=p=0", pathOf("a.png")});
    EXPECT_EQ(probe.output, "rgb24\n");
    expectSameFrames(distinctFrames());
}

// A single-picture reader sees the first frame.
TEST_F(AnimationTest, isAPngOfItsFirstFrame) {
    make();
    EXPECT_EQ(decode(read(pathOf("a.png"))), decode(read(pathOf("f/frame-00001.png"))));
}

TEST_F(AnimationTest, laysOverAVideo) {
    make({"--tail", "0"});
    Outcome made = run({kFfmpeg, "-v", "error", "-f", "lavfi", "-i",
                        "color=c=blue:size=160x120:rate=25:duration=0.4", "-c:v", "ffv1",
                        pathOf("video.mkv")});
    ASSERT_EQ(made.status, 0) << made.errors;
    made = run({kFfmpeg, "-v", "error", "-i", pathOf("video.mkv"), "-framerate", "25", "-i",
                pathOf("f/frame-%05d.png"), "-filter_complex", "overlay=format=rgb", "-frames:v",
                "9", "-f", "rawvideo", "-pix_fmt", "rgb24", pathOf("raw")});
    ASSERT_EQ(made.status, 0) << made.errors;
    const std::string raw = read(pathOf("raw"));
    constexpr std::size_t kFrame = 3UL * 160 * 120;
    ASSERT_EQ(raw.size(), 9 * kFrame);
    // Frame 9 shows 320 ms: the touch is at (102, 56); its white rim lies 25 points from there.
    const auto red = [&](int x, int y) {
        return static_cast<unsigned char>(raw[8 * kFrame + 3 * (160UL * y + x)]);
    };
    EXPECT_LT(red(150, 110), 8);
    EXPECT_GT(red(102 + 25, 56), 100);
}

}  // namespace
}  // namespace skavlo
