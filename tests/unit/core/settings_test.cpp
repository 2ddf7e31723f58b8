#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdio>
#include <limits>

#include "platform/linux/plist/plist_property_lists.h"
#include "settings/colour.h"
#include "settings/default_settings.h"
#include "settings/loose_value.h"
#include "settings/settings_directory.h"

namespace skavlo {
namespace {

TEST(SettingsDirectory, NamesTheFilesByTheirCommonPrefix) {
    const SettingsDirectory directory("/var/mobile/Library/");
    EXPECT_EQ(directory.settingsFile(),
              "/var/mobile/Library/Caches/com.oxbrel.skavlo.settings.plist");
    EXPECT_EQ(directory.pidFile(), "/var/mobile/Library/Caches/com.oxbrel.skavlo.pid");
    EXPECT_EQ(directory.customImageFile(),
              "/var/mobile/Library/Caches/com.oxbrel.skavlo.custom_image.png");
}

struct LooseCase {
    const char* name;
    const char* text;
    int asInt;
    float asFloat;
    bool asBool;
};

class LooseString : public testing::TestWithParam<LooseCase> {};

TEST_P(LooseString, IsScanned) {
    const PropertyValue value(GetParam().text);
    EXPECT_EQ(intValue(&value), GetParam().asInt);
    EXPECT_EQ(floatValue(&value), GetParam().asFloat);
    EXPECT_EQ(boolValue(&value), GetParam().asBool);
}

INSTANTIATE_TEST_SUITE_P(
    All, LooseString,
    testing::Values(
        LooseCase{"Empty", "", 0, 0, false}, LooseCase{"Letters", "abc", 0, 0, false},
        LooseCase{"Hexadecimal", "0x10", 0, 0, false},
        LooseCase{"LeadingSpace", " 12", 12, 12, true},
        LooseCase{"LettersBehind", "12abc", 12, 12, true},
        LooseCase{"Negative", "-5", -5, -5, true}, LooseCase{"PlusSign", "+7", 7, 7, true},
        LooseCase{"LeadingTab", "\t3", 3, 3, true}, LooseCase{"Exponent", "1e3", 1, 1000, true},
        LooseCase{"Yes", "YES", 0, 0, true}, LooseCase{"True", "true", 0, 0, true},
        LooseCase{"LargeY", "Y", 0, 0, true}, LooseCase{"SmallT", "t", 0, 0, true},
        LooseCase{"No", "NO", 0, 0, false}, LooseCase{"NegativeWithZeros", "-0007", -7, -7, true},
        LooseCase{"Zeros", "000", 0, 0, false}, LooseCase{"NotANumber", "nan", 0, 0, false},
        LooseCase{"Infinity", "inf", 0, 0, false}, LooseCase{"PointFirst", ".5", 0, 0.5F, false},
        LooseCase{"MinusAlone", "-", 0, 0, false}, LooseCase{"TinyReal", "1e-400", 1, 0, true},
        LooseCase{"HugeReal", "1e400", 1, std::numeric_limits<float>::infinity(), true},
        LooseCase{"TooLarge", "99999999999", std::numeric_limits<int>::max(), 9.9999998e10F, true},
        LooseCase{"TooSmall", "-99999999999", std::numeric_limits<int>::min(), -9.9999998e10F,
                  true}),
    [](const auto& suite) { return std::string(suite.param.name); });

TEST(LooseValue, RealsTruncateTowardZeroAndSaturate) {
    const auto asInteger = [](double real) {
        const PropertyValue value(real);
        return integerValue(&value);
    };
    EXPECT_EQ(asInteger(2.9), 2);
    EXPECT_EQ(asInteger(-2.9), -2);
    EXPECT_EQ(asInteger(1e300), std::numeric_limits<std::int64_t>::max());
    EXPECT_EQ(asInteger(-1e300), std::numeric_limits<std::int64_t>::min());
    EXPECT_EQ(asInteger(std::numeric_limits<double>::quiet_NaN()), 0);
}

TEST(LooseValue, BooleansAreOneAndZero) {
    const PropertyValue yes(true);
    EXPECT_EQ(intValue(&yes), 1);
    EXPECT_EQ(floatValue(&yes), 1.0F);
    const PropertyValue half(0.5);
    EXPECT_TRUE(boolValue(&half));
}

TEST(LooseValue, ContainersDataAndNothingAreZeroAndFalse) {
    const PropertyValue values[] = {PropertyArray{1}, PropertyDictionary{{"a", 1}}, {}};
    for (const PropertyValue& value : values) {
        EXPECT_EQ(integerValue(&value), 0);
        EXPECT_EQ(floatValue(&value), 0);
        EXPECT_FALSE(boolValue(&value));
    }
    EXPECT_EQ(intValue(static_cast<const PropertyValue*>(nullptr)), 0);
    EXPECT_FALSE(boolValue(nullptr));
}

TEST(DefaultSettings, HasThirtyOneKeys) {
    const PropertyDictionary defaults = defaultSettings();
    EXPECT_EQ(defaults.size(), 31U);
    EXPECT_EQ(defaults.at("colorAlpha"), PropertyValue(0.55));
    EXPECT_EQ(defaults.at("fillColor"), PropertyValue(PropertyArray{0.66, 0.66, 0.66, 1.0}));
    EXPECT_EQ(defaults.at("emojiString"), PropertyValue("🍎"));
    EXPECT_EQ(defaults.at("displayMode"), PropertyValue(0));
    EXPECT_EQ(defaults.at("isEnglish"), PropertyValue(false));
}

class PropertyListFile : public testing::Test {
  protected:
    // What the program says, which may read the bytes in the file of its first argument.
    static std::string runPython(const std::string& program, const std::string& bytes) {
        const std::string path = testing::TempDir() + "skavlo-plist-" + std::to_string(getpid());
        FILE* file = std::fopen(path.c_str(), "wb");
        std::fwrite(bytes.data(), 1, bytes.size(), file);
        std::fclose(file);
        const std::string command = "python3 -c '" + program + "' " + path;
        FILE* pipe = popen(command.c_str(), "r");
        std::string output;
        for (int c = std::fgetc(pipe); c != EOF; c = std::fgetc(pipe)) {
            output += static_cast<char>(c);
        }
        EXPECT_EQ(pclose(pipe), 0);
        std::remove(path.c_str());
        return output;
    }
    // What another reader makes of the bytes, one "key kind value" a line.
    static std::string readByPython(const std::string& bytes) {
        return runPython(
            "import plistlib,sys\n"
            "d=plistlib.load(open(sys.argv[1],\"rb\"))\n"
            "for k in sorted(d): print(k,type(d[k]).__name__,repr(d[k]))",
            bytes);
    }
    PlistPropertyLists lists;
};

TEST_F(PropertyListFile, TheDefaultsSurviveWritingAndReading) {
    EXPECT_EQ(lists.parse(lists.serialize(defaultSettings())), defaultSettings());
}

TEST_F(PropertyListFile, IsReadByAnotherReader) {
    const std::string seen = readByPython(lists.serialize({{"a", true},
                                                           {"b", 0},
                                                           {"c", 0.55},
                                                           {"d", static_cast<double>(0.6F)},
                                                           {"e", "🍎 <&>"},
                                                           {"f", PropertyArray{0.66, 1.0}},
                                                           {"g", -3}}));
    EXPECT_EQ(seen,
              "a bool True\nb int 0\nc float 0.55\nd float 0.6000000238418579\n"
              "e str '🍎 <&>'\nf list [0.66, 1.0]\ng int -3\n");
}

TEST_F(PropertyListFile, RealsHaveSeventeenDigits) {
    const std::string xml =
        lists.serialize({{"a", static_cast<double>(0.6F)}, {"b", 0.55}, {"c", 0.0}});
    EXPECT_NE(xml.find("<real>0.60000002384185791</real>"), std::string::npos) << xml;
    EXPECT_NE(xml.find("<real>0.55000000000000004</real>"), std::string::npos) << xml;
    EXPECT_NE(xml.find("<real>0.0</real>"), std::string::npos) << xml;
}

// Whoever else keeps something in the file finds it there after every save.
TEST_F(PropertyListFile, WhatNoSettingUsesSurvivesTwoSaves) {
    for (const std::string form : {"XML", "BINARY"}) {
        const std::string original = runPython(
            "import plistlib,sys,datetime\n"
            "d=dict(data=bytes(range(256)),empty=b\"\",date=datetime.datetime(2024,2,29,12,34,56),"
            "old=datetime.datetime(1901,1,1),large=2**64-1,above=2**63,least=-2**63,most=2**63-1,"
            "nested=dict(list=[b\"x\",datetime.datetime(1969,12,31,23,59,59),2**63+1]))\n"
            "sys.stdout.buffer.write(plistlib.dumps(d,fmt=plistlib.FMT_" +
                form + "))",
            "");
        const auto read = lists.parse(original);
        ASSERT_TRUE(read) << form;
        EXPECT_TRUE(read->at("large").as<PropertyOpaque>());
        EXPECT_EQ(read->at("least"), PropertyValue(std::numeric_limits<std::int64_t>::min()));
        PropertyDictionary changed = *read;
        changed["displayMode"] = 2;
        const auto again = lists.parse(lists.serialize(changed));
        ASSERT_TRUE(again) << form;
        EXPECT_EQ(*again, changed) << form;
        const std::string saved = lists.serialize(*again);
        EXPECT_EQ(readByPython(saved),
                  readByPython(original).insert(readByPython(original).find("empty"),
                                                "displayMode int 2\n"))
            << form;
    }
}

TEST_F(PropertyListFile, AReferenceSurvives) {
    const auto read =
        lists.parse(runPython("import plistlib,sys\n"
                              "sys.stdout.buffer.write(plistlib.dumps(dict(u=plistlib.UID(7)),"
                              "fmt=plistlib.FMT_BINARY))",
                              ""));
    ASSERT_TRUE(read);
    EXPECT_TRUE(read->at("u").as<PropertyOpaque>());
    // XML has no references of its own; this is how one is written there.
    const std::string saved = lists.serialize(*read);
    EXPECT_EQ(readByPython(saved), "u dict {'CF$UID': 7}\n");
    const auto again = lists.parse(saved);
    ASSERT_TRUE(again);
    EXPECT_EQ(lists.serialize(*again), saved);
}

TEST_F(PropertyListFile, GarbageIsNoPropertyList) {
    for (const char* bytes :
         {"", "garbage", "<plist>", "<plist><array/></plist>", "bplist00",
          "bplist00\xff\xff\xff\xff\xff\xff\xff\xff", "<plist><dict><key>a</key>"}) {
        EXPECT_FALSE(lists.parse(bytes)) << bytes;
    }
}

TEST_F(PropertyListFile, EndlessNestingIsRefused) {
    std::string xml = "<plist><dict><key>a</key>";
    for (int i = 0; i < 200000; ++i) xml += "<array>";
    EXPECT_FALSE(lists.parse(xml));
    for (int i = 0; i < 200000; ++i) xml += "</array>";
    EXPECT_FALSE(lists.parse(xml + "</dict></plist>"));
}

TEST_F(PropertyListFile, NestingInABinaryFileCannotExhaustTheStack) {
    // Objects 0 (a dictionary with the key "a") and then arrays of one, each holding the next.
    constexpr int kArrays = 12000;
    std::string bytes = "bplist00";
    std::string offsets;
    const auto big = [](unsigned value) {
        std::string text(2, static_cast<char>(value >> 8U));
        text[1] = static_cast<char>(value & 0xffU);
        return text;
    };
    const auto object = [&](const std::string& data) {
        offsets += big(static_cast<unsigned>(bytes.size()));
        bytes += data;
    };
    std::string dictionary("\xd1");
    dictionary += big(1);
    dictionary += big(2);
    object(dictionary);
    object(
        "\x51"
        "a");
    for (int i = 0; i < kArrays; ++i) {
        std::string array("\xa1");
        array += big(static_cast<unsigned>(i + 3));
        object(array);
    }
    object("\x09");
    const auto table = static_cast<unsigned>(bytes.size());
    bytes += offsets;
    bytes.append(6, '\0').append(2, '\2');
    for (const unsigned value : {static_cast<unsigned>(kArrays + 3), 0U, table}) {
        bytes.append(6, '\0').append(big(value));
    }
    EXPECT_FALSE(lists.parse(bytes));
}

}  // namespace
}  // namespace skavlo
