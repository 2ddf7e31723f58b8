#include <gtest/gtest.h>

#include "tools/recording/recording.h"

namespace skavlo {
namespace {

using enum TouchPhase;

constexpr const char* kDevice =
    "# EVEMU 1.3\n"
    "# Kernel: 6.1.0\n"
    "N: A touch screen\n"
    "I: 0003 1234 5678 0111\n"
    "P: 02 00 00 00 00 00 00 00\n"
    "B: 00 0b 00 00 00 00 00 00 00\n"
    "A: 2f 0 9 0 0 0\n"
    "A: 35 100 4195 0 0 12\n"
    "A: 36 0 2047 0 0 12\n"
    "A: 39 0 65535 0 0 0\n";

TouchRecording recordingOf(const std::string& events) {
    auto recording = parseRecording(kDevice + events, "file");
    EXPECT_TRUE(recording) << recording.error().message;
    return recording ? *recording : TouchRecording{};
}

TEST(Evemu, takesScreenFromAxesAndTimesFromFirstEvent) {
    const TouchRecording recording = recordingOf(
        "E: 7.000001 0003 0039 0045\t# EV_ABS / ABS_MT_TRACKING_ID   45\n"
        "E: 7.000001 0003 0035 0110\n"
        "E: 7.000001 0003 0036 0020\n"
        "E: 7.000001 0001 014a 0001\n"
        "E: 7.000001 0000 0000 0000\t# ------------ SYN_REPORT (0) ----------\n"
        "E: 7.010001 0003 0035 0115\n"
        "E: 7.010001 0000 0000 0000\n"
        "E: 7.020001 0003 0039 -001\n"
        "E: 7.020001 0000 0000 0000\n");
    EXPECT_EQ(recording.screen, (Size{4096, 2048}));
    const std::vector<RecordedFrame> expected = {
        {0, {{0, {10, 20}, kDown}}},
        {10'000'000, {{0, {15, 20}, kMove}}},
        {20'000'000, {{0, {15, 20}, kUp}}},
    };
    EXPECT_EQ(recording.frames, expected);
}

TEST(Evemu, keepsSlotsApart) {
    const TouchRecording recording = recordingOf(
        "E: 0.0 0003 0039 0001\nE: 0.0 0003 0035 0101\nE: 0.0 0003 0036 0001\n"
        "E: 0.0 0003 002f 0003\n"
        "E: 0.0 0003 0039 0002\nE: 0.0 0003 0035 0102\nE: 0.0 0003 0036 0002\n"
        "E: 0.0 0000 0000 0000\n"
        "E: 0.1 0003 0036 0009\n"
        "E: 0.1 0000 0000 0000\n");
    const std::vector<RecordedFrame> expected = {
        {0, {{0, {1, 1}, kDown}, {3, {2, 2}, kDown}}},
        {100'000'000, {{3, {2, 9}, kMove}}},
    };
    EXPECT_EQ(recording.frames, expected);
}

TEST(Evemu, showsDownAndUpWithinOneFrame) {
    const TouchRecording recording = recordingOf(
        "E: 0.0 0003 0039 0001\nE: 0.0 0003 0035 0101\nE: 0.0 0003 0036 0001\n"
        "E: 0.0 0003 0039 -1\nE: 0.0 0000 0000 0000\n");
    const std::vector<RecordedFrame> expected = {{0, {{0, {1, 1}, kDown}, {0, {1, 1}, kUp}}}};
    EXPECT_EQ(recording.frames, expected);
}

TEST(Evemu, endsAContactWhoseSlotIsUsedAgain) {
    const TouchRecording recording = recordingOf(
        "E: 0.0 0003 0039 0001\nE: 0.0 0003 0035 0101\nE: 0.0 0003 0036 0001\n"
        "E: 0.0 0000 0000 0000\n"
        "E: 0.5 0003 0039 0002\nE: 0.5 0003 0035 0105\nE: 0.5 0000 0000 0000\n");
    const std::vector<RecordedFrame> expected = {
        {0, {{0, {1, 1}, kDown}}},
        {500'000'000, {{0, {1, 1}, kUp}, {0, {5, 1}, kDown}}},
    };
    EXPECT_EQ(recording.frames, expected);
}

TEST(Evemu, endsEveryContactWhenEventsWereDropped) {
    const TouchRecording recording = recordingOf(
        "E: 0.0 0003 0039 0001\nE: 0.0 0003 0035 0101\nE: 0.0 0003 0036 0001\n"
        "E: 0.0 0000 0000 0000\n"
        "E: 1.0 0000 0003 0000\t# SYN_DROPPED\n"
        "E: 1.0 0003 0035 0900\n"
        "E: 1.0 0000 0000 0000\n"
        "E: 2.0 0003 0035 0103\n"
        "E: 2.0 0000 0000 0000\n");
    const std::vector<RecordedFrame> expected = {
        {0, {{0, {1, 1}, kDown}}},
        {1'000'000'000, {{0, {1, 1}, kUp}}},
        {2'000'000'000, {{0, {3, 1}, kDown}}},
    };
    EXPECT_EQ(recording.frames, expected);
}

std::string errorOf(const std::string& text) {
    auto recording = parseRecording(text, "file");
    return recording ? "" : recording.error().message;
}

TEST(Evemu, namesFileLineAndFault) {
    const std::string device = kDevice;  // ten lines
    EXPECT_EQ(errorOf(device + "E: 0.0 0003 002f 0064\n"), "file:11: no such slot");
    EXPECT_EQ(errorOf(device + "E: 0.0 0003 002f -1\n"), "file:11: no such slot");
    EXPECT_EQ(errorOf(device + "E: 0.0 0003 0035\n"),
              "file:11: expected: E: SECONDS TYPE CODE VALUE");
    EXPECT_EQ(errorOf(device + "E: x 0003 0035 0000\n"),
              "file:11: expected: E: SECONDS TYPE CODE VALUE");
    EXPECT_EQ(errorOf(device + "E: 1.0 0000 0000 0000\nE: 0.5 0000 0000 0000\n"),
              "file:12: time goes back");
    EXPECT_EQ(errorOf("# EVEMU 1.3\nA: 35 9 1 0 0 0\n"),
              "file:2: expected: A: CODE MINIMUM MAXIMUM FUZZ FLAT");
    EXPECT_EQ(errorOf("N: a mouse\nE: 0.0 0002 0000 0001\n"),
              "file:2: the device has no horizontal touch axis (A: 35)");
    EXPECT_EQ(errorOf("N: half a touch screen\nA: 35 0 9 0 0 0\n"),
              "file:2: the device has no vertical touch axis (A: 36)");
}

}  // namespace
}  // namespace skavlo
