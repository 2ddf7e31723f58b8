// Checks in surroundings that are as they should be, and in broken ones.
#include "tools/doctor/checks.h"

#include <gmock/gmock.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <map>

#include "tools/doctor/display_rules.h"

namespace skavlo::doctor {
namespace {

namespace fs = std::filesystem;
using std::string_literals::operator""s;
using testing::ElementsAre;

std::vector<std::string> levels(const Findings& findings) {
    std::vector<std::string> result;
    for (const Finding& finding : findings) result.emplace_back(name(finding.level));
    return result;
}

class Checks : public testing::Test {
  protected:
    void SetUp() override {
        std::string pattern = fs::temp_directory_path() / "skavlo-doctor-XXXXXX";
        ASSERT_NE(mkdtemp(pattern.data()), nullptr);
        directory = pattern;
        surroundings.variable = [this](const char* name) -> const char* {
            const auto found = variables.find(name);
            return found == variables.end() ? nullptr : found->second.c_str();
        };
        surroundings.user = 1000;
        surroundings.libraryPrefix = directory.string() + "/";
        surroundings.runDirectory = directory / "run";
        surroundings.programDirectory = directory;
        surroundings.root = geteuid();
        surroundings.mobileGroup = getegid();
        // The libraries' own view.
        for (const char* name : {"DISPLAY", "WAYLAND_DISPLAY", "XDG_RUNTIME_DIR",
                                 "PIPEWIRE_RUNTIME_DIR", "PIPEWIRE_REMOTE"})
            unsetenv(name);
    }
    void TearDown() override { fs::remove_all(directory); }

    void makeFolders() {
        fs::create_directories(surroundings.caches());
        fs::create_directories(surroundings.notify());
    }
    void makePersona(mode_t mode) {
        std::ofstream(surroundings.persona()) << "x";
        ASSERT_EQ(chmod(surroundings.persona().c_str(), mode), 0);
    }

    fs::path directory;
    std::map<std::string, std::string> variables;
    Surroundings surroundings;
};

TEST_F(Checks, EveryFindingThatIsNotOkSaysWhatToDoInBothLanguages) {
    for (const Check& check : allChecks()) {
        for (const Finding& finding : check(surroundings)) {
            EXPECT_FALSE(finding.check.empty());
            EXPECT_FALSE(finding.what.en.empty()) << finding.check;
            EXPECT_FALSE(finding.what.zh.empty()) << finding.check;
            EXPECT_EQ(finding.advice.en.empty(), finding.advice.zh.empty());
            EXPECT_TRUE(finding.level == Level::ok || !finding.advice.en.empty())
                << finding.what.en;
        }
    }
}

TEST_F(Checks, Folders) {
    EXPECT_THAT(levels(checkFolders(surroundings)), ElementsAre("fail", "fail"));
    makeFolders();
    EXPECT_THAT(levels(checkFolders(surroundings)), ElementsAre("ok", "ok"));
    ASSERT_EQ(chmod(surroundings.notify().c_str(), 0777), 0);
    EXPECT_THAT(levels(checkFolders(surroundings)), ElementsAre("ok", "fail"));
    fs::remove(surroundings.caches());
    std::ofstream(surroundings.caches()) << "a file";
    EXPECT_THAT(levels(checkFolders(surroundings)), ElementsAre("fail", "fail"));
}

TEST_F(Checks, FoldersThatAreNotMine) {
    if (geteuid() == 0) GTEST_SKIP() << "root may write everywhere";
    makeFolders();
    ASSERT_EQ(chmod(surroundings.caches().c_str(), 0500), 0);
    EXPECT_THAT(levels(checkFolders(surroundings)), ElementsAre("warn", "ok"));
}

TEST_F(Checks, TheHelper) {
    EXPECT_THAT(levels(checkHelper(surroundings)), ElementsAre("warn"));
    EXPECT_FALSE(overlayIsRoot(surroundings));
    makePersona(04750);
    EXPECT_THAT(levels(checkHelper(surroundings)), ElementsAre("ok"));
    EXPECT_TRUE(overlayIsRoot(surroundings));
    for (const mode_t mode : {0750, 04755, 04770, 06750}) {
        ASSERT_EQ(chmod(surroundings.persona().c_str(), mode), 0);
        EXPECT_THAT(levels(checkHelper(surroundings)), ElementsAre("fail")) << mode;
        EXPECT_FALSE(overlayIsRoot(surroundings)) << mode;
    }
    ASSERT_EQ(chmod(surroundings.persona().c_str(), 04750), 0);
    surroundings.mobileGroup = getegid() + 1;
    EXPECT_THAT(levels(checkHelper(surroundings)), ElementsAre("fail"));
    surroundings.user = 0;
    EXPECT_THAT(levels(checkHelper(surroundings)), ElementsAre("ok"));
    EXPECT_TRUE(overlayIsRoot(surroundings));
}

TEST_F(Checks, WithoutADisplay) {
    const Findings findings = checkDisplay(surroundings);
    EXPECT_THAT(levels(findings), ElementsAre("fail"));
    EXPECT_NE(findings[0].advice.en.find("DISPLAY"), std::string::npos);
}

TEST_F(Checks, ADisplayThatDoesNotAnswer) {
    setenv("DISPLAY", ":4711", 1);
    setenv("WAYLAND_DISPLAY", "/nonexistent/wayland-0", 1);
    variables["DISPLAY"] = ":4711";
    EXPECT_THAT(levels(checkDisplay(surroundings)), ElementsAre("fail"));
    unsetenv("DISPLAY");
    unsetenv("WAYLAND_DISPLAY");
}

TEST(CaptureVerdict, SaysWhatItMeansWhenNothingCanBeKnown) {
    const Finding knows{"capture", Level::ok};
    const Finding doesNot{"capture", Level::warn};
    EXPECT_EQ(withVerdict({doesNot, knows, doesNot}).size(), 3U);
    const Findings findings = withVerdict({doesNot, doesNot});
    EXPECT_THAT(levels(findings), ElementsAre("warn", "warn", "warn"));
    EXPECT_NE(findings.back().what.en.find("stay hidden"), std::string::npos);
}

TEST(CaptureMirroring, IsAFindingThatSaysWhatItMeans) {
    OutputLayout layout;
    EXPECT_TRUE(judgeMirroring(layout).empty());
    layout.outputs.resize(2);
    layout.outputs[0].rect = {0, 0, 1920, 1080};
    layout.outputs[1].rect = {1920, 0, 1920, 1080};
    EXPECT_TRUE(judgeMirroring(layout).empty());
    layout.outputs[1].rect = layout.outputs[0].rect;
    const Findings findings = judgeMirroring(layout);
    ASSERT_THAT(levels(findings), ElementsAre("ok"));
    EXPECT_EQ(findings[0].check, "capture");
    EXPECT_NE(findings[0].what.en.find("mirrored"), std::string::npos);
    EXPECT_NE(findings[0].what.en.find("\"Show in Record Only\" the markers are shown"),
              std::string::npos);
    EXPECT_NE(findings[0].what.zh.find("镜像"), std::string::npos);
    EXPECT_NE(findings[0].what.zh.find("“仅录屏时显示”时标记照常显示"), std::string::npos);
}

TEST(DisplayOutput, IsTheMainOneByItsName) {
    OutputLayout layout;
    EXPECT_TRUE(judgeOutput(layout).empty());
    layout.outputs = {{.name = "HDMI-1"}, {.name = "eDP-1"}, {}};
    layout.main = 1;
    const Findings findings = judgeOutput(layout);
    ASSERT_THAT(levels(findings), ElementsAre("ok"));
    EXPECT_EQ(findings[0].check, "output");
    EXPECT_EQ(findings[0].what.en, "the markers lie on the output eDP-1");
    EXPECT_NE(findings[0].what.zh.find("eDP-1"), std::string::npos);
    layout.main = 2;
    EXPECT_TRUE(judgeOutput(layout).empty());
}

TEST_F(Checks, CaptureWithASilentEventSocket) {
    variables["HYPRLAND_INSTANCE_SIGNATURE"] = "x";
    variables["XDG_RUNTIME_DIR"] = directory;
    const Findings findings = checkCapture(surroundings);
    ASSERT_GE(findings.size(), 3U);
    EXPECT_EQ(findings[1].level, Level::warn);
    EXPECT_NE(findings[1].what.en.find("/hypr/x/.socket2.sock"), std::string::npos);
}

TEST_F(Checks, Images) {
    EXPECT_THAT(levels(checkImages(surroundings)), ElementsAre("fail"));
    fs::copy_file("/bin/false", surroundings.raster());
    // Without PNG nothing goes; another kind may be missing.
    EXPECT_THAT(
        levels(checkImages(surroundings)),
        ElementsAre("fail", "warn", "warn", "warn", "warn", "warn", "warn", "warn", "warn"));
    surroundings.programDirectory = SKAVLO_PRODUCT_DIRECTORY;
    const Findings findings = checkImages(surroundings);
    ASSERT_EQ(findings.size(), 9U);
    // What gdk-pixbuf reads without a package of loaders.
    for (const char* kind : {"PNG", "JPEG", "GIF", "BMP", "TIFF"}) {
        EXPECT_TRUE(std::ranges::any_of(findings, [&](const Finding& finding) {
            return finding.level == Level::ok && finding.what.en == kind + " can be shown"s;
        })) << kind;
    }
}

TEST_F(Checks, FontsOfASystemWithoutAny) {
    const fs::path configuration = directory / "fonts.conf";
    std::ofstream(configuration) << "<?xml version='1.0'?><fontconfig><dir>" << directory.string()
                                 << "/none</dir></fontconfig>";
    setenv("FONTCONFIG_FILE", configuration.c_str(), 1);
    EXPECT_THAT(levels(checkFonts(surroundings)), ElementsAre("warn", "warn", "warn"));
    unsetenv("FONTCONFIG_FILE");
    EXPECT_EQ(checkFonts(surroundings)[0].level, Level::ok);
}

struct DisplayCase {
    const char* name;
    DisplayFacts facts;
    std::vector<std::string> levels;
    const char* words;  // in the first finding
};

class DisplayRules : public testing::TestWithParam<DisplayCase> {};

TEST_P(DisplayRules, Judge) {
    const Findings findings = judgeDisplay(GetParam().facts);
    EXPECT_EQ(levels(findings), GetParam().levels);
    EXPECT_NE((findings[0].what.en + findings[0].advice.en).find(GetParam().words),
              std::string::npos)
        << findings[0].what.en;
}

INSTANTIATE_TEST_SUITE_P(
    Sessions, DisplayRules,
    testing::Values(
        DisplayCase{"Nothing", {}, {"fail"}, "WAYLAND_DISPLAY or DISPLAY"},
        DisplayCase{"X11", {.x = true, .alpha = true}, {"ok"}, "X11 session"},
        DisplayCase{"X11WithoutAlpha", {.x = true}, {"fail"}, "no visual"},
        DisplayCase{
            "LayerShell", {.wayland = true, .layerShell = true}, {"ok", "ok"}, "layer shell"},
        DisplayCase{"LayerShellAndX",
                    {.wayland = true, .layerShell = true, .x = true, .alpha = true},
                    {"ok", "ok"},
                    "layer shell"},
        DisplayCase{
            "XWayland", {.wayland = true, .x = true, .alpha = true}, {"ok", "warn"}, "XWayland"},
        DisplayCase{"WaylandOnly", {.wayland = true}, {"fail", "warn"}, "enable XWayland"}),
    [](const auto& instance) { return instance.param.name; });

TEST(Mutter, SwallowsTouchesBefore44Point2) {
    EXPECT_EQ(swallowsTouches("mutter 43.8"), true);
    EXPECT_EQ(swallowsTouches("GNOME Shell 43.9\n"), true);
    EXPECT_EQ(swallowsTouches("mutter 44.1"), true);
    EXPECT_EQ(swallowsTouches("mutter 44.beta"), true);
    EXPECT_EQ(swallowsTouches("mutter 44.2"), false);
    EXPECT_EQ(swallowsTouches("mutter 44.10"), false);
    EXPECT_EQ(swallowsTouches("mutter 46"), false);
    EXPECT_EQ(swallowsTouches(""), std::nullopt);
    EXPECT_EQ(swallowsTouches("mutter"), std::nullopt);
    EXPECT_EQ(swallowsTouches("mutter 99999999999999999999.1"), std::nullopt);
}

}  // namespace
}  // namespace skavlo::doctor
