#include "tests/unit/replay/replay_fixture.h"

namespace skavlo {
namespace {

class OptionsTest : public ReplayTest {
  protected:
    // The message, without the hint at the help that follows it.
    std::string refusal(const Words& arguments) {
        const Outcome run = replay(arguments);
        EXPECT_EQ(run.status, 2);
        EXPECT_EQ(run.output, "");
        EXPECT_TRUE(files().empty());
        const std::string prefix = "skavlo-replay: ";
        const std::string hint = "\nTry: skavlo-replay --help\n";
        const auto end = run.errors.find(hint);
        EXPECT_EQ(run.errors.substr(0, prefix.size()), prefix) << run.errors;
        EXPECT_NE(end, std::string::npos) << run.errors;
        return run.errors.substr(prefix.size(), end - prefix.size());
    }
    std::string refusalOf(const std::string& option, const std::string& value) {
        return refusal({option, value, "--at", "1", "--output", pathOf("x"), golden("drag.txt")});
    }
    PixelSize sizeWith(const Words& more) {
        return decode(pictureAt("300", golden("drag.txt"), more)).size;
    }
};

TEST_F(OptionsTest, helpNamesEveryOption) {
    const Outcome help = replay({"--help"});
    EXPECT_EQ(help.status, 0);
    EXPECT_EQ(help.errors, "");
    for (const char* option : {"--frames", "--animation", "--at", "--output", "--settings",
                               "--size", "--scale", "--fps", "--tail", "--background", "--help",
                               "--version", "Usage: skavlo-replay [OPTION]... RECORDING"}) {
        EXPECT_NE(help.output.find(option), std::string::npos) << option;
    }
}

TEST_F(OptionsTest, versionIsOneLine) {
    const Outcome version = replay({"--version"});
    EXPECT_EQ(version.status, 0);
    EXPECT_EQ(version.output.substr(0, 14), "skavlo-replay ");
    EXPECT_EQ(version.output.find('\n'), version.output.size() - 1);
}

TEST_F(OptionsTest, badArgumentsAreNamed) {
    EXPECT_EQ(refusal({}), "expected: one recording");
    EXPECT_EQ(refusal({"a", "b"}), "expected: one recording");
    EXPECT_EQ(refusal({"a", "--bogus"}), "no such option: --bogus");
    EXPECT_EQ(refusal({"a", "-xyz"}), "no such option: -x");
    EXPECT_EQ(refusal({"a", "--size"}), "--size needs a value");
    EXPECT_EQ(refusal({"a"}), "nothing to make: give --frames, --animation or --at and --output");
    EXPECT_EQ(refusal({"a", "--at", "5"}), "--at and --output go together");
    EXPECT_EQ(refusal({"a", "--output", "x"}), "--at and --output go together");
    EXPECT_EQ(refusal({"a", "--at", "5", "--output", "x", "--frames", "y"}),
              "--at is one picture: neither --frames nor --animation");
}

TEST_F(OptionsTest, badValuesAreNamedWithWhatWasExpected) {
    const std::string size = ": expected: WIDTHxHEIGHT, both from 1 to 100000";
    for (const char* bad : {"", "10", "x", "10x", "x10", "0x10", "-5x10", "10x1e9", "10x10x10",
                            "nanx10", "10 x 10"}) {
        EXPECT_EQ(refusalOf("--size", bad), std::string("--size ") + bad + size);
    }
    for (const char* bad : {"", "0", "-1", "nan", "inf", "101", "2,5", "2x"}) {
        EXPECT_EQ(refusalOf("--scale", bad),
                  std::string("--scale ") + bad + ": expected: a number from 0.01 to 100");
    }
    for (const char* bad : {"0", "-1", "1001", "29.97", "sixty", "99999999999999"}) {
        EXPECT_EQ(refusalOf("--fps", bad),
                  std::string("--fps ") + bad + ": expected: a whole number from 1 to 1000");
    }
    EXPECT_EQ(refusalOf("--tail", "-1"), "--tail -1: expected: seconds from 0 to 100000");
    EXPECT_EQ(refusalOf("--at", "1e10"), "--at 1e10: expected: milliseconds from 0 to 1000000000");
    for (const char* bad : {"", "12345", "1234567", "-12345", "0x1234", "green!"}) {
        EXPECT_EQ(refusalOf("--background", bad),
                  std::string("--background ") + bad + ": expected: six hexadecimal digits RRGGBB");
    }
    EXPECT_EQ(refusalOf("--settings", ""), "--settings : expected: a name");
}

TEST_F(OptionsTest, sizeAndScaleMakeThePicturesSize) {
    EXPECT_EQ(sizeWith({}), (PixelSize{160, 120}));
    EXPECT_EQ(sizeWith({"--scale", "2"}), (PixelSize{320, 240}));
    EXPECT_EQ(sizeWith({"--size", "320x200"}), (PixelSize{320, 200}));
    EXPECT_EQ(sizeWith({"--size", "100x50.5", "--scale", "0.5"}), (PixelSize{50, 25}));
}

// The touch of drag.txt is at (98, 53) of 160 by 120 points at 300 ms.
TEST_F(OptionsTest, touchesAreStretchedOverTheScreen) {
    const auto alphaAt = [](const Decoded& picture, int x, int y) {
        return picture.bytes.at(4 * (static_cast<std::size_t>(y) * picture.size.width + x) + 3);
    };
    const Decoded wide = decode(pictureAt("300", golden("drag.txt"), {"--size", "1600x120"}));
    EXPECT_GT(alphaAt(wide, 980, 53), 0);
    EXPECT_EQ(alphaAt(wide, 98, 53), 0);
}

TEST_F(OptionsTest, backgroundIsOpaque) {
    const Decoded picture =
        decode(pictureAt("300", golden("drag.txt"), {"--background", "1A2b3C"}));
    for (std::size_t i = 3; i < picture.bytes.size(); i += 4) ASSERT_EQ(picture.bytes[i], 255);
    EXPECT_EQ(picture.bytes[0], 0x1A);
    EXPECT_EQ(picture.bytes[1], 0x2B);
    EXPECT_EQ(picture.bytes[2], 0x3C);
}

// The last event is at 420 ms, the marker has faded 500 ms later.
TEST_F(OptionsTest, tailCountsFromTheLastEvent) {
    const auto framesWith = [&](const Words& more) {
        Words arguments{"--fps", "100", "--frames", pathOf("frames")};
        arguments.insert(arguments.end(), more.begin(), more.end());
        arguments.push_back(golden("drag.txt"));
        EXPECT_EQ(replay(arguments).status, 0);
        std::size_t count = 0;
        char name[32];
        do {
            std::snprintf(name, sizeof name, "frames/frame-%05zu.png", ++count);
        } while (std::remove(pathOf(name).c_str()) == 0);
        return count - 1;
    };
    EXPECT_EQ(framesWith({}), 93U);
    EXPECT_EQ(framesWith({"--tail", "0"}), 43U);
    EXPECT_EQ(framesWith({"--tail", "0.1"}), 53U);
    EXPECT_EQ(framesWith({"--tail", "1"}), 143U);
}

}  // namespace
}  // namespace skavlo
