#include <filesystem>

#include "tests/unit/replay/replay_fixture.h"

namespace skavlo {
namespace {

class DeterminismTest : public ReplayTest {
  protected:
    // Every byte of a run that makes everything, files in order of their names.
    std::vector<std::string> bytesOf(const std::string& name, const Words& environment) {
        const Outcome run = replay({"--frames", pathOf(name), "--animation", pathOf(name + ".png"),
                                    "--fps", "30", "--scale", "0.5", SKAVLO_TWO_HANDS},
                                   environment);
        EXPECT_EQ(run.status, 0) << run.errors;
        std::vector<std::string> bytes{read(pathOf(name + ".png"))};
        char frame[32];
        const auto count = std::distance(std::filesystem::directory_iterator(pathOf(name)), {});
        for (int i = 1; i <= count; ++i) {
            std::snprintf(frame, sizeof frame, "/frame-%05d.png", i);
            bytes.push_back(read(pathOf(name) + frame));
            EXPECT_FALSE(bytes.back().empty()) << frame;
        }
        return bytes;
    }
};

TEST_F(DeterminismTest, sameBytesInEveryRunAndEnvironment) {
    const auto first = bytesOf("first", {});
    ASSERT_GT(first.size(), 80U);  // 2.5 seconds and the fading after it, at 30 a second
    EXPECT_EQ(bytesOf("second", {}), first);
    EXPECT_EQ(bytesOf("third", {"LC_ALL=de_DE.UTF-8", "LANG=tr_TR.UTF-8", "TZ=Asia/Tokyo",
                                "HOME=/nonexistent", "DISPLAY=:77", "PNG_LEVEL=9"}),
              first);
}

TEST_F(DeterminismTest, sameEmojiInEveryRun) {
    const std::string settings = writeFile("settings",
                                           "<plist version=\"1.0\"><dict><key>displayMode</key>"
                                           "<integer>2</integer></dict></plist>");
    const Words more{"--settings", settings};
    const std::string first = pictureAt("300", golden("drag.txt"), more);
    EXPECT_EQ(pictureAt("300", golden("drag.txt"), more), first);
    EXPECT_EQ(pictureAt("300", golden("drag.txt"), more, {"LC_ALL=de_DE.UTF-8"}), first);
    EXPECT_NE(pictureAt("300", golden("drag.txt")), first);
}

TEST_F(DeterminismTest, framesShowWhatSingleMomentsShow) {
    ASSERT_EQ(replay({"--frames", pathOf("f"), "--fps", "50", golden("drag.txt")}).status, 0);
    EXPECT_EQ(read(pathOf("f/frame-00001.png")), pictureAt("0", golden("drag.txt")));
    EXPECT_EQ(read(pathOf("f/frame-00016.png")), pictureAt("300", golden("drag.txt")));
    EXPECT_EQ(read(pathOf("f/frame-00031.png")), pictureAt("600", golden("drag.txt")));
}

TEST_F(DeterminismTest, evemuRecordingGivesTheSamePictures) {
    for (const char* time : {"0", "50", "300", "410", "420", "600"}) {
        EXPECT_EQ(pictureAt(time, golden("drag.evemu")), pictureAt(time, golden("drag.txt")))
            << time;
    }
}

}  // namespace
}  // namespace skavlo
