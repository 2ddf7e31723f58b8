#include <filesystem>

#include "tests/unit/replay/replay_fixture.h"

namespace skavlo {
namespace {

class BadInputTest : public ReplayTest {
  protected:
    Outcome picture(const std::string& recording, const Words& more = {}) {
        Words arguments{"--at", "10", "--output", pathOf("x.png"), recording};
        arguments.insert(arguments.end(), more.begin(), more.end());
        return replay(arguments);
    }
    // What is said of a recording with this text, without the file's name in front of it.
    std::string refusal(const std::string& text) {
        const std::string file = writeFile("recording", text);
        const Outcome run = picture(file);
        EXPECT_EQ(run.status, 2) << text;
        EXPECT_EQ(files(), Words{"recording"}) << "something was left behind";
        EXPECT_EQ(run.errors.substr(0, file.size()), file);
        return run.errors.substr(std::min(file.size(), run.errors.size()));
    }
    // What is said of a recording that is drawn all the same.
    std::string warning(const std::string& text) {
        const std::string file = writeFile("recording", text);
        const Outcome run = picture(file);
        EXPECT_EQ(run.status, 0) << run.errors;
        EXPECT_EQ(decode(read(pathOf("x.png"))).size, (PixelSize{9, 9}));
        return run.errors.substr(std::min(file.size(), run.errors.size()));
    }
};

constexpr const char* kScreen = "screen 9 9\n";
constexpr const char* kEvent = "expected: MILLISECONDS CONTACT X Y down|move|up\n";
constexpr const char* kNoScreen = ": expected: screen WIDTH HEIGHT, both above 0\n";

TEST_F(BadInputTest, namesFileAndLine) {
    EXPECT_EQ(refusal(""), std::string(":0") + kNoScreen);
    EXPECT_EQ(refusal("0 1 2 3 down\n"), std::string(":1") + kNoScreen);
    EXPECT_EQ(refusal("# nothing\n\nscreen 9\n"), std::string(":3") + kNoScreen);
    EXPECT_EQ(refusal(kScreen + std::string("0 1 2 3x down\n")), std::string(":2: ") + kEvent);
    EXPECT_EQ(refusal(kScreen + std::string("0 1 2 3 press\n")), std::string(":2: ") + kEvent);
    EXPECT_EQ(refusal(kScreen + std::string("\n0 -1 2 3 down\n")), std::string(":3: ") + kEvent);
    EXPECT_EQ(refusal(kScreen + std::string("5 1 2 3 down\n4 1 2 3 up\n")), ":3: time goes back\n");
    EXPECT_EQ(refusal(std::string("\x7f"
                                  "ELF\0\1\2\3\xff\xfe\n\0\0",
                                  13)),
              std::string(":1") + kNoScreen);
}

TEST_F(BadInputTest, namesFileAndLineOfEvemuRecordings) {
    const std::string device = "# EVEMU 1.3\nA: 35 0 9 0 0\nA: 36 0 9 0 0\n";
    EXPECT_EQ(refusal(device + "E: 0.0 3 35\n"), ":4: expected: E: SECONDS TYPE CODE VALUE\n");
    EXPECT_EQ(refusal(device + "E: 1.0 0 0 0\nE: 0.5 0 0 0\n"), ":5: time goes back\n");
    EXPECT_EQ(refusal(device + "E: 0.0 3 2f -1\n"), ":4: no such slot\n");
    EXPECT_EQ(refusal("# EVEMU 1.3\nE: 0.0 0 0 0\n"),
              ":2: the device has no horizontal touch axis (A: 35)\n");
}

TEST_F(BadInputTest, missingFilesAreNamed) {
    for (const std::string& path : {pathOf("missing"), std::string("/")}) {
        const Outcome run = picture(path);
        EXPECT_EQ(run.status, 2);
        EXPECT_EQ(run.errors, path + ": no such file\n");
    }
    const Outcome settings = picture(golden("drag.txt"), {"--settings", pathOf("missing")});
    EXPECT_EQ(settings.status, 2);
    EXPECT_EQ(settings.errors, pathOf("missing") + ": cannot be read\n");
    EXPECT_TRUE(files().empty());
}

TEST_F(BadInputTest, picturesTooLargeAreRefused) {
    const std::string tooLarge =
        ": the picture has sides above 16384 or more than 67108864 pixels; --size or --scale makes "
        "it smaller\n";
    EXPECT_EQ(refusal("screen 1e300 1e300\n"), tooLarge);
    EXPECT_EQ(refusal("screen 16385 1\n"), tooLarge);
    EXPECT_EQ(refusal("screen 9000 9000\n"), tooLarge);
}

TEST_F(BadInputTest, recordingsTooLongAreRefusedAndNothingIsLeft) {
    const std::string tooLong =
        ": more than 99999 frames; a lower --fps or --tail makes it fewer\n";
    const std::string file = writeFile("recording", "screen 1 1\n0 1 0 0 down\n1e12 1 0 0 up\n");
    const Outcome run = replay({"--frames", pathOf("f"), "--fps", "1", file});
    EXPECT_EQ(run.status, 2);
    EXPECT_EQ(run.errors, file + tooLong);
    // Known only when it does not stop fading.
    writeFile("recording", "screen 1 1\n0 1 0 0 down\n99990 1 0 0 up\n");
    const Outcome late = replay({"--animation", pathOf("a.png"), "--fps", "1000", file});
    EXPECT_EQ(late.status, 2);
    EXPECT_EQ(late.errors, file + tooLong);
    EXPECT_EQ(files(), Words{"recording"});
}

TEST_F(BadInputTest, anEndlessAnimationIsCutOffAfterAMinute) {
    const std::string settings =
        writeFile("settings",
                  "<plist version=\"1.0\"><dict><key>colorAnimDuration</key>"
                  "<real>1e30</real></dict></plist>");
    const Outcome run = replay({"--frames", pathOf("f"), "--fps", "1", "--scale", "0.1",
                                "--settings", settings, golden("drag.txt")});
    EXPECT_EQ(run.status, 0) << run.errors;
    EXPECT_TRUE(std::filesystem::exists(pathOf("f/frame-00062.png")));
    EXPECT_FALSE(std::filesystem::exists(pathOf("f/frame-00063.png")));
}

TEST_F(BadInputTest, aSignalLeavesNothingBehind) {
    const std::string file = writeFile("recording", "screen 200 200\n0 1 0 0 down\n1e7 1 0 0 up\n");
    interrupt({"--frames", pathOf("f"), "--fps", "9", file}, pathOf("f/frame-00001.png"));
    EXPECT_EQ(files(), Words{"recording"});
}

TEST_F(BadInputTest, oddContactsAreShownWithAWarning) {
    EXPECT_EQ(warning(kScreen + std::string("0 1 2 3 down\n5.5 2 2 3 move\n6 2 2 3 move\n")),
              ": warning: at 5.5 ms contact 2 moves without touching and begins there\n");
    EXPECT_EQ(warning(kScreen + std::string("0 1 2 3 down\n1 1 2 3 down\n")),
              ": warning: at 1 ms contact 1 touches twice and begins anew\n");
    EXPECT_EQ(warning(kScreen + std::string("0 1 2 3 up\n")),
              ": warning: at 0 ms contact 1 lifts without touching, which nothing comes of\n");
    EXPECT_EQ(warning(kScreen + std::string("0 1 2 3 down\n1 1 2 3 up\n2 1 3 4 down\n")), "");
}

TEST_F(BadInputTest, touchesFarOutsideShowNothing) {
    EXPECT_EQ(warning(kScreen + std::string("0 1 1e300 -1e300 down\n5 1 -1e308 1e308 move\n")), "");
    const Decoded picture = decode(read(pathOf("x.png")));
    for (const std::uint8_t byte : picture.bytes) ASSERT_EQ(byte, 0);
}

TEST_F(BadInputTest, recordingWithoutTouchesIsOneEmptyFrame) {
    const std::string file = writeFile("recording", kScreen);
    ASSERT_EQ(replay({"--frames", pathOf("f"), file}).status, 0);
    EXPECT_TRUE(std::filesystem::exists(pathOf("f/frame-00001.png")));
    EXPECT_FALSE(std::filesystem::exists(pathOf("f/frame-00002.png")));
}

TEST_F(BadInputTest, badSettingsShowTheDefaults) {
    const std::string settings = writeFile("settings", "no property list");
    const Outcome run = picture(golden("drag.txt"), {"--settings", settings});
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(run.errors,
              settings + ": warning: no property list: the overlay's defaults are shown\n");
    EXPECT_EQ(read(pathOf("x.png")), pictureAt("10", golden("drag.txt")));
}

TEST_F(BadInputTest, whatTheSettingsCannotShowIsToldAndTheStarShown) {
    const auto settingsWith = [&](const std::string& image) {
        return writeFile("settings",
                         "<plist version=\"1.0\"><dict><key>displayMode</key><integer>1</integer>"
                         "<key>imagePath</key><string>" +
                             image + "</string></dict></plist>");
    };
    const std::string missing = settingsWith(pathOf("none"));
    Outcome run = picture(golden("drag.txt"), {"--settings", missing});
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(run.errors, missing + ": warning: no such image: " + pathOf("none") + "\n");
    const std::string star = read(pathOf("x.png"));
    EXPECT_EQ(star,
              pictureAt("10", golden("drag.txt"), {"--settings", golden("star.settings.plist")}));

    const std::string broken = settingsWith(writeFile("broken.png", "\x89PNG and nothing more"));
    run = picture(golden("drag.txt"), {"--settings", broken});
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(run.errors, broken + ": warning: cannot draw: " + pathOf("broken.png") + "\n");
    EXPECT_EQ(read(pathOf("x.png")), star);
}

TEST_F(BadInputTest, forceHideShowsNothingAndSaysSo) {
    const std::string settings = writeFile(
        "settings", "<plist version=\"1.0\"><dict><key>forceHide</key><true/></dict></plist>");
    const Outcome run = picture(golden("drag.txt"), {"--settings", settings});
    EXPECT_EQ(run.errors, settings + ": warning: forceHide is set: nothing is shown\n");
    for (const std::uint8_t byte : decode(read(pathOf("x.png"))).bytes) ASSERT_EQ(byte, 0);
}

TEST_F(BadInputTest, onlyShowInRecordShowsAsPicturesAreRecords) {
    const std::string settings =
        writeFile("settings",
                  "<plist version=\"1.0\"><dict><key>onlyShowInRecord</key><true/></dict></plist>");
    EXPECT_EQ(pictureAt("50", golden("drag.txt"), {"--settings", settings}),
              pictureAt("50", golden("drag.txt")));
}

TEST_F(BadInputTest, whatCannotBeWrittenIsNamedAndNothingIsLeft) {
    const std::string nowhere = pathOf("none/x.png");
    Outcome run = replay({"--at", "1", "--output", nowhere, golden("drag.txt")});
    EXPECT_EQ(run.status, 1);
    EXPECT_EQ(run.errors,
              "skavlo-replay: cannot write " + nowhere + ": No such file or directory\n");
    run = replay({"--at", "1", "--output", "/dev/full", golden("drag.txt")});
    EXPECT_EQ(run.status, 1);
    EXPECT_EQ(run.errors, "skavlo-replay: cannot write /dev/full: No space left on device\n");
    EXPECT_TRUE(std::filesystem::is_character_file("/dev/full"));
    // The frames go again when the animation beside them fails.
    run = replay({"--frames", pathOf("f"), "--animation", nowhere, golden("drag.txt")});
    EXPECT_EQ(run.status, 1);
    EXPECT_TRUE(files().empty());
}

TEST_F(BadInputTest, framesAreNotMixedWithOlderOnes) {
    ASSERT_TRUE(std::filesystem::create_directory(pathOf("f")));
    const std::string old = writeFile("f/frame-00400.png", "old");
    const Outcome run = replay({"--frames", pathOf("f"), golden("drag.txt")});
    EXPECT_EQ(run.status, 1);
    EXPECT_EQ(run.errors, "skavlo-replay: " + pathOf("f") + " holds frames already\n");
    EXPECT_EQ(read(old), "old");
}

}  // namespace
}  // namespace skavlo
