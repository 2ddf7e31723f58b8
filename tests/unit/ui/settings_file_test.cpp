#include "settings/settings_file.h"

#include <unistd.h>

#include <array>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>

#include "tests/unit/ui/settings_fixture.h"

namespace skavlo {
namespace {

// What the application writes when there was no file.
constexpr const char* kDefaultFile =
    R"(<?xml version="1.0" encoding="UTF-8"?>
<!DOCTYPE plist PUBLIC "-//Apple//DTD PLIST 1.0//EN" "http://www.apple.com/DTDs/PropertyList-1.0.dtd">
<plist version="1.0">
<dict>
	<key>borderColor</key>
	<array>
		<real>1</real>
		<real>1</real>
		<real>1</real>
		<real>1</real>
	</array>
	<key>colorAlpha</key>
	<real>0.55000000000000004</real>
	<key>colorAnimDuration</key>
	<real>0.5</real>
	<key>colorBorderWidth</key>
	<real>5</real>
	<key>colorLiftScale</key>
	<real>2</real>
	<key>colorSize</key>
	<real>55</real>
	<key>colorTracking</key>
	<true/>
	<key>displayMode</key>
	<integer>0</integer>
	<key>emojiAlpha</key>
	<real>0.80000000000000004</real>
	<key>emojiAnimDuration</key>
	<real>0.5</real>
	<key>emojiBorderAlpha</key>
	<real>0.5</real>
	<key>emojiBorderColor</key>
	<array>
		<real>1</real>
		<real>1</real>
		<real>1</real>
		<real>1</real>
	</array>
	<key>emojiBorderWidth</key>
	<real>5</real>
	<key>emojiFillAlpha</key>
	<real>0.5</real>
	<key>emojiFillColor</key>
	<array>
		<real>0.66000000000000003</real>
		<real>0.66000000000000003</real>
		<real>0.66000000000000003</real>
		<real>1</real>
	</array>
	<key>emojiLiftScale</key>
	<real>2</real>
	<key>emojiShowBorder</key>
	<false/>
	<key>emojiSize</key>
	<real>60</real>
	<key>emojiString</key>
	<string>🍎</string>
	<key>emojiTracking</key>
	<true/>
	<key>fillColor</key>
	<array>
		<real>0.66000000000000003</real>
		<real>0.66000000000000003</real>
		<real>0.66000000000000003</real>
		<real>1</real>
	</array>
	<key>forceHide</key>
	<false/>
	<key>imageAlpha</key>
	<real>0.55000000000000004</real>
	<key>imageAnimDuration</key>
	<real>0.5</real>
	<key>imageLiftScale</key>
	<real>2</real>
	<key>imagePath</key>
	<string></string>
	<key>imageSize</key>
	<real>80</real>
	<key>imageTracking</key>
	<true/>
	<key>isEnglish</key>
	<false/>
	<key>onlyShowInRecord</key>
	<false/>
	<key>singleFingerMode</key>
	<false/>
</dict>
</plist>
)";

class SettingsFile : public SettingsFixture {};

TEST_F(SettingsFile, NoFileBecomesOneOfAllTheDefaults) {
    load();
    EXPECT_EQ(settings(), defaultSettings());
    EXPECT_EQ(bytes(), kDefaultFile);
}

TEST_F(SettingsFile, IsReadTwiceAndWrittenOnceWithoutNotification) {
    make();
    controller->skv_overlayEnabled = true;
    controller->viewDidLoad();
    EXPECT_EQ(files.settingsReads, 2);
    EXPECT_EQ(log.whats(), (Strings{"setHeader", kWrite}));
    loop.runPosted();
    EXPECT_EQ(count(kReload), 0);
    EXPECT_EQ(count(kWrite), 1);
}

TEST_F(SettingsFile, AFileOfOneKeyKeepsItAndTakesTheOtherDefaults) {
    load({{"colorSize", 100}});
    PropertyDictionary expected = defaultSettings();
    expected["colorSize"] = 100;
    EXPECT_EQ(settings(), expected);
    EXPECT_EQ(stored(), expected);
    EXPECT_EQ(stored().size(), 31U);
}

TEST_F(SettingsFile, ForceHideIsWrittenBackAsFalse) {
    for (const PropertyValue& value : {PropertyValue(true), PropertyValue(1)}) {
        load({{"forceHide", value}});
        EXPECT_EQ(stored().at("forceHide"), PropertyValue(false));
    }
}

TEST_F(SettingsFile, AnUnknownKeySurvivesTheLoadAndEverySave) {
    load({{"somethingElse", "kept"}});
    EXPECT_EQ(stored().at("somethingElse"), PropertyValue("kept"));
    store({});
    controller->skv_saveSettingsAndNotify();
    loop.runPosted();
    EXPECT_EQ(stored().at("somethingElse"), PropertyValue("kept"));
    controller->skv_toggleLanguage();
    EXPECT_EQ(stored().at("somethingElse"), PropertyValue("kept"));
    EXPECT_EQ(stored().size(), 32U);
}

TEST_F(SettingsFile, AnUnreadableFileCountsAsAbsent) {
    store({{"colorSize", 100}});
    files.unreadable = true;
    load();
    EXPECT_EQ(settings(), defaultSettings());
}

TEST_F(SettingsFile, GarbageCountsAsAbsent) {
    files.files.writeAtomically(directory.settingsFile(), "garbage");
    load();
    EXPECT_EQ(settings(), defaultSettings());
    EXPECT_EQ(bytes(), kDefaultFile);
}

TEST_F(SettingsFile, AFailedWriteIsIgnoredAndTheScreenStaysAsItWas) {
    files.full = true;
    load();
    EXPECT_EQ(settings(), defaultSettings());
    EXPECT_EQ(bytes(), "");
}

TEST_F(SettingsFile, AThreeNumberColourShowsTheDefaultColour) {
    load({{"fillColor", PropertyArray{0.1, 0.2, 0.3}}, {"borderColor", PropertyArray{0.1}}});
    EXPECT_EQ(displayControl<ColorWell>(3)->selectedColor, kLightGrayColor);
    EXPECT_EQ(displayControl<ColorWell>(4)->selectedColor, kWhiteColor);
}

TEST_F(SettingsFile, TheSwitchesShowTheFile) {
    load({{"onlyShowInRecord", 1}, {"singleFingerMode", 1}});
    EXPECT_TRUE(controller->skv_recordOnlySwitch->isOn());
    EXPECT_TRUE(controller->skv_singleTouchSwitch->isOn());
    EXPECT_FALSE(controller->skv_multiTouchSwitch->isOn());
    load({{"onlyShowInRecord", false}, {"singleFingerMode", false}});
    EXPECT_FALSE(controller->skv_recordOnlySwitch->isOn());
    EXPECT_FALSE(controller->skv_singleTouchSwitch->isOn());
    EXPECT_TRUE(controller->skv_multiTouchSwitch->isOn());
}

TEST_F(SettingsFile, BothStoredFormsOfTheFlagsAreRead) {
    for (const auto& [english, single] :
         {std::pair<PropertyValue, PropertyValue>{true, true}, {1, 1}, {"YES", 1.0}}) {
        load({{"isEnglish", english}, {"singleFingerMode", single}});
        EXPECT_STREQ(controller->L("zh", "en"), "en");
        EXPECT_TRUE(controller->skv_singleTouchSwitch->isOn());
    }
}

TEST_F(SettingsFile, IsEnglishAndSingleFingerModeBecomeIntegersInTheFile) {
    load();
    controller->skv_toggleLanguage();
    tap(controller->skv_multiTouchSwitch);
    loop.runPosted();
    EXPECT_NE(bytes().find("<key>isEnglish</key>\n\t<integer>1</integer>"), std::string::npos);
    EXPECT_NE(bytes().find("<key>singleFingerMode</key>\n\t<integer>1</integer>"),
              std::string::npos);
    tap(controller->skv_singleTouchSwitch);
    loop.runPosted();
    EXPECT_NE(bytes().find("<key>singleFingerMode</key>\n\t<false/>"), std::string::npos);
}

// The same file, as programs of others read it.
class OtherReaders : public SettingsFixture {
  protected:
    void SetUp() override {
        std::string pattern = testing::TempDir() + "skavlo-settings-XXXXXX";
        ASSERT_NE(mkdtemp(pattern.data()), nullptr);
        folder = pattern;
        load();
        const auto alpha = displayCell(5)->sliderRow;
        alpha->slider.setValue(0.6F);
        alpha->valueChanged(alpha->slider);
        const auto width = displayCell(7)->sliderRow;
        width->slider.setValue(0);
        width->valueChanged(width->slider);
        settings()["emojiString"] = "<&> 🍏";
        settings()["imagePath"] = directory.customImageFile();
        controller->skv_toggleLanguage();
        file = folder / "settings.plist";
        std::ofstream(file, std::ios::binary) << bytes();
    }
    void TearDown() override { std::filesystem::remove_all(folder); }

    static bool has(const char* program) {
        return std::system((std::string("command -v ") + program + " >/dev/null").c_str()) == 0;
    }
    static std::string outputOf(const std::string& command) {
        FILE* pipe = popen(command.c_str(), "r");
        std::string output;
        for (int c = std::fgetc(pipe); c != EOF; c = std::fgetc(pipe)) {
            output += static_cast<char>(c);
        }
        EXPECT_EQ(pclose(pipe), 0) << command;
        return output;
    }
    static std::string contentsOf(const std::filesystem::path& path) {
        std::ostringstream contents;
        contents << std::ifstream(path, std::ios::binary).rdbuf();
        return contents.str();
    }

    std::filesystem::path folder;
    std::filesystem::path file;
};

TEST_F(OtherReaders, PythonReadsEveryKeyWithItsType) {
    if (!has("python3")) GTEST_SKIP() << "python3 is not installed";
    const std::string seen = outputOf(
        "PYTHONIOENCODING=utf-8 python3 -c 'import plistlib,sys\n"
        "d=plistlib.load(open(sys.argv[1],\"rb\"))\n"
        "for k in sorted(d): print(k,type(d[k]).__name__,d[k])' " +
        file.string());
    EXPECT_EQ(seen, R"(borderColor list [1.0, 1.0, 1.0, 1.0]
colorAlpha float 0.6000000238418579
colorAnimDuration float 0.5
colorBorderWidth float 0.0
colorLiftScale float 2.0
colorSize float 55.0
colorTracking bool True
displayMode int 0
emojiAlpha float 0.8
emojiAnimDuration float 0.5
emojiBorderAlpha float 0.5
emojiBorderColor list [1.0, 1.0, 1.0, 1.0]
emojiBorderWidth float 5.0
emojiFillAlpha float 0.5
emojiFillColor list [0.66, 0.66, 0.66, 1.0]
emojiLiftScale float 2.0
emojiShowBorder bool False
emojiSize float 60.0
emojiString str <&> 🍏
emojiTracking bool True
fillColor list [0.66, 0.66, 0.66, 1.0]
forceHide bool False
imageAlpha float 0.55
imageAnimDuration float 0.5
imageLiftScale float 2.0
imagePath str /library/Caches/com.oxbrel.skavlo.custom_image.png
imageSize float 80.0
imageTracking bool True
isEnglish int 1
onlyShowInRecord bool False
singleFingerMode bool False
)");
}

TEST_F(OtherReaders, PlistutilTurnsItIntoTheBinaryFormAndBack) {
    if (!has("plistutil")) GTEST_SKIP() << "plistutil is not installed";
    const auto binary = folder / "binary.plist";
    const auto xml = folder / "xml.plist";
    outputOf("plistutil -i " + file.string() + " -o " + binary.string());
    ASSERT_TRUE(contentsOf(binary).starts_with("bplist00"));
    outputOf("plistutil -i " + binary.string() + " -o " + xml.string());
    EXPECT_EQ(lists.parse(contentsOf(binary)), settings());
    EXPECT_EQ(lists.parse(contentsOf(xml)), settings());
}

TEST_F(OtherReaders, SliderValuesAreSinglePrecisionAndZeroHasADecimal) {
    EXPECT_NE(bytes().find("<key>colorAlpha</key>\n\t<real>0.60000002384185791</real>"),
              std::string::npos);
    EXPECT_NE(bytes().find("<key>colorBorderWidth</key>\n\t<real>0.0</real>"), std::string::npos);
    EXPECT_NE(bytes().find("<string>&lt;&amp;&gt; 🍏</string>"), std::string::npos);
}

}  // namespace
}  // namespace skavlo
