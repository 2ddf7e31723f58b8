#include "tools/doctor/report.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <filesystem>
#include <fstream>

namespace skavlo::doctor {
namespace {

const Finding kGood{"fonts", Level::ok, {"有", "there"}};
const Finding kBad{"helper", Level::fail, {"坏", "broken"}, {"修", "mend it"}};
const Finding kSo{"touch", Level::warn, {"无", "none"}, {"接", "plug in"}};

// What Python's own reader makes of it.
std::string readByPython(const std::string& json, const std::string& expression) {
    std::string path = std::filesystem::temp_directory_path() / "skavlo-json-XXXXXX";
    close(mkstemp(path.data()));
    std::ofstream(path, std::ios::binary) << json;
    const std::string command = "python3 -c \"import json; d = json.load(open('" + path +
                                "', encoding='utf-8')); print(" + expression + ")\" 2>&1";
    FILE* pipe = popen(command.c_str(), "r");
    std::string output;
    char piece[256];
    while (std::fgets(piece, sizeof piece, pipe)) output += piece;
    pclose(pipe);
    std::filesystem::remove(path);
    if (output.ends_with('\n')) output.pop_back();
    return output;
}

TEST(Report, IsOneLineEach) {
    EXPECT_EQ(asText({kGood, kBad}, Language::english),
              "ok    fonts     there\n"
              "fail  helper    broken → mend it\n");
    EXPECT_EQ(asText({kSo}, Language::chinese), "warn  touch     无 → 接\n");
    EXPECT_EQ(asText({}, Language::english), "");
}

TEST(Report, ANameCannotMoveTheCursor) {
    EXPECT_EQ(asText({{"touch", Level::ok, {"", "a\nb\x1b[2J\x7f"}}}, Language::english),
              "ok    touch     a b [2J \n");
}

TEST(Report, TheExitStatusIsOneForAFailOnly) {
    EXPECT_EQ(exitStatus({}), 0);
    EXPECT_EQ(exitStatus({kGood, kSo}), 0);
    EXPECT_EQ(exitStatus({kGood, kBad, kSo}), 1);
}

TEST(Report, JsonIsReadByPython) {
    const std::string json = asJson({kGood, kBad, kSo}, Language::english);
    EXPECT_EQ(readByPython(json, "d['status'], len(d['findings'])"), "fail 3");
    EXPECT_EQ(readByPython(json, "d['findings'][1]['advice'], 'advice' in d['findings'][0]"),
              "mend it False");
    EXPECT_EQ(readByPython(asJson({}, Language::english), "d['status'], d['findings']"), "ok []");
    EXPECT_EQ(readByPython(asJson({kSo}, Language::chinese), "ascii(d['findings'][0]['text'])"),
              "'\\u65e0'");
}

TEST(Report, JsonIsValidWhateverTheTextsHold) {
    const std::string text = std::string("\"\\\n\t\x01\x7f", 6) + "\xff\xc0\xaf\xe6\xed\xa0\x80" +
                             "\xf4\x90\x80\x80" + "\xf0\x9f\x91\x8d" + std::string(1, '\0') + "é";
    const std::string json = asJson({{"x", Level::ok, {"", text}}}, Language::english);
    EXPECT_EQ(readByPython(json, "ascii(d['findings'][0]['text'])"),
              "'\"\\\\\\n\\t\\x01\\x7f" +
                  std::string("\\ufffd\\ufffd\\ufffd\\ufffd\\ufffd\\ufffd"
                              "\\ufffd\\ufffd\\ufffd\\ufffd\\ufffd") +
                  "\\U0001f44d\\x00\\xe9'");
}

TEST(Report, TheLanguageIsTheLocales) {
    EXPECT_EQ(languageOf(nullptr, nullptr, nullptr), Language::english);
    EXPECT_EQ(languageOf(nullptr, nullptr, "zh_CN.UTF-8"), Language::chinese);
    EXPECT_EQ(languageOf("", "", "zh_TW"), Language::chinese);
    EXPECT_EQ(languageOf("C", nullptr, "zh_CN.UTF-8"), Language::english);
    EXPECT_EQ(languageOf(nullptr, "zh_CN", "de_DE"), Language::chinese);
}

}  // namespace
}  // namespace skavlo::doctor
