#include "tools/recording/recording.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdio>
#include <fstream>

namespace skavlo {
namespace {

std::string errorOf(std::string_view text) {
    auto recording = parseRecording(text, "file");
    return recording ? "" : recording.error().message;
}

TEST(Recording, readsScreenFramesAndComments) {
    auto recording = parseRecording(
        "# two fingers\n\nscreen 1280 720.5\n"
        "0 1 10 20 down\r\n"
        "0\t2 30.5 -4 down # beside the screen\n"
        "16.667 1 11 21 move\n"
        "16.667 2 30.5 -4 up",
        "file");
    ASSERT_TRUE(recording) << recording.error().message;
    EXPECT_EQ(recording->screen, (Size{1280, 720.5}));
    const std::vector<RecordedFrame> expected = {
        {0, {{1, {10, 20}, TouchPhase::kDown}, {2, {30.5, -4}, TouchPhase::kDown}}},
        {16'667'000, {{1, {11, 21}, TouchPhase::kMove}, {2, {30.5, -4}, TouchPhase::kUp}}},
    };
    EXPECT_EQ(recording->frames, expected);
}

TEST(Recording, keepsOddContactOrders) {
    auto recording = parseRecording("screen 10 10\n5 0 1 1 up\n5 0 1 1 down\n5 0 1 1 up\n", "file");
    ASSERT_TRUE(recording);
    ASSERT_EQ(recording->frames.size(), 1U);
    EXPECT_EQ(recording->frames[0].touches.size(), 3U);
}

TEST(Recording, withoutEventsHasNoFrames) {
    auto recording = parseRecording("screen 10 10\n", "file");
    ASSERT_TRUE(recording);
    EXPECT_TRUE(recording->frames.empty());
}

TEST(Recording, namesFileLineAndFault) {
    const std::string screen = "file:1: expected: screen WIDTH HEIGHT, both above 0";
    const std::string event = "expected: MILLISECONDS CONTACT X Y down|move|up";
    EXPECT_EQ(errorOf("0 1 2 3 down\n"), screen);
    EXPECT_EQ(errorOf("screen 0 10\n"), screen);
    EXPECT_EQ(errorOf("screen nan 10\n"), screen);
    EXPECT_EQ(errorOf("screen 10\n"), screen);
    EXPECT_EQ(errorOf(""), "file:0: expected: screen WIDTH HEIGHT, both above 0");
    EXPECT_EQ(errorOf("screen 9 9\n\n0 1 2 3\n"), "file:3: " + event);
    EXPECT_EQ(errorOf("screen 9 9\n0 1 2 3 down down\n"), "file:2: " + event);
    EXPECT_EQ(errorOf("screen 9 9\n0 1 2 3 press\n"), "file:2: " + event);
    EXPECT_EQ(errorOf("screen 9 9\n0 -1 2 3 down\n"), "file:2: " + event);
    EXPECT_EQ(errorOf("screen 9 9\n0 1.5 2 3 down\n"), "file:2: " + event);
    EXPECT_EQ(errorOf("screen 9 9\n-1 1 2 3 down\n"), "file:2: " + event);
    EXPECT_EQ(errorOf("screen 9 9\n1e300 1 2 3 down\n"), "file:2: " + event);
    EXPECT_EQ(errorOf("screen 9 9\n0 1 2x 3 down\n"), "file:2: " + event);
    EXPECT_EQ(errorOf("screen 9 9\n0 1 inf 3 down\n"), "file:2: " + event);
    EXPECT_EQ(errorOf("screen 9 9\n5 1 2 3 down\n4 1 2 3 up\n"), "file:3: time goes back");
}

TEST(Recording, refusesWhatIsNoFile) {
    auto missing = readRecording("/nonexistent/recording");
    ASSERT_FALSE(missing);
    EXPECT_EQ(missing.error().message, "/nonexistent/recording: no such file");
    auto directory = readRecording("/");
    ASSERT_FALSE(directory);
    EXPECT_EQ(directory.error().message, "/: no such file");
}

TEST(Recording, readsAFile) {
    const std::string path = testing::TempDir() + "skavlo-recording-" + std::to_string(getpid());
    std::ofstream(path) << "screen 5 5\n0 1 2 3 down\n";
    auto recording = readRecording(path);
    std::remove(path.c_str());
    ASSERT_TRUE(recording) << recording.error().message;
    EXPECT_EQ(recording->frames.size(), 1U);
}

}  // namespace
}  // namespace skavlo
