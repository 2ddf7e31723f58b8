// The whole product, as a person would walk through it.
#include <gmock/gmock.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>

#include "platform/linux/plist/plist_property_lists.h"
#include "settings/default_settings.h"
#include "settings/loose_value.h"
#include "tests/e2e/settings/settings_rig.h"
#include "tools/picture/png.h"
#include "tools/rig/desktop_portal.h"

namespace skavlo {
namespace {

constexpr PixelPoint kFinger{900, 450};
constexpr std::uint32_t kDefaultMarker = 0xff6b7988;  // grey 0.66 at 0.55 on the background

class SettingsWalk : public SettingsRig {
  protected:
    // Pictures are kept only where somebody asked for them, as docs/images/make does.
    void keepPicture(const std::string& name) {
        const char* directory = std::getenv("SKAVLO_WALK_PICTURES");
        if (!directory) return;
        // Once nothing moves any more, the markers apart, which pulse.
        Bitmap before = capture();
        const rig::Deadline deadline(std::chrono::seconds(2));
        while (!deadline.passed()) {
            rig::waitReadable({}, rig::Deadline(std::chrono::milliseconds(100)));
            Bitmap now = capture();
            if (now.pixels == before.pixels) break;
            before = std::move(now);
        }
        const auto error = writePng(std::string(directory) + "/" + name + ".png", before);
        EXPECT_FALSE(error) << error->message;
    }

    // Touches once; true when the pixel there becomes as wanted within the time that a marker takes
    // to pop in, several times over.
    bool oneTouchShows(PixelPoint place, const std::function<bool(std::uint32_t)>& wanted) {
        bool seen = false;
        touch().begin(0, {kFinger.x + 0.5, kFinger.y + 0.5});
        const rig::Deadline soon(std::chrono::milliseconds(600));
        while (!seen && !soon.passed()) seen = wanted(at(capture(), place.x, place.y));
        if (seen) keepPicture("touch-" + std::to_string(++touches_));
        touch().end(0);
        captureUntil(isClearOfMarkers, "the desktop without markers");
        return seen;
    }
    // Touches until it is so: a reload takes a moment to arrive.
    bool touchShows(PixelPoint place, const std::function<bool(std::uint32_t)>& wanted) {
        const rig::Deadline deadline(kPatience);
        while (!deadline.passed()) {
            if (oneTouchShows(place, wanted)) return true;
        }
        keepPicture("not-as-wanted");
        return false;
    }
    bool touchShowsNothing() {
        const rig::Deadline deadline(kPatience);
        while (!deadline.passed()) {
            if (!oneTouchShows(kFinger, isMarked)) return true;
        }
        return false;
    }
    static bool isClearOfMarkers(const Bitmap& screen) {
        for (int y = 0; y < kDesktop.height; y += 3) {
            for (int x = 500; x < kDesktop.width; x += 3) {
                if (at(screen, x, y) != kBackground) return false;
            }
        }
        return true;
    }
    static bool isLike(std::uint32_t pixel, std::uint32_t wanted) {
        for (int shift = 0; shift < 24; shift += 8) {
            const int difference = static_cast<int>(pixel >> shift & 0xffU) -
                                   static_cast<int>(wanted >> shift & 0xffU);
            if (std::abs(difference) > 3) return false;
        }
        return true;
    }
    static std::function<bool(std::uint32_t)> like(std::uint32_t wanted) {
        return [wanted](std::uint32_t pixel) { return isLike(pixel, wanted); };
    }
    static bool isReddish(std::uint32_t pixel) {
        const auto red = pixel >> 16 & 0xffU;
        return red > (pixel >> 8 & 0xffU) + 40 && red > (pixel & 0xffU) + 40;
    }
    static bool isMarked(std::uint32_t pixel) { return pixel != kBackground; }

    static std::vector<float> colour(const std::string& key) {
        std::vector<float> result;
        const PropertyDictionary now = settings();
        if (const auto* array = now.at(key).as<PropertyArray>()) {
            for (const PropertyValue& part : *array) result.push_back(floatValue(&part));
        }
        return result;
    }

    void drag(const std::string& slider, double share) {
        EXPECT_TRUE(application().dragSlider(slider, share, rig::Deadline(kPatience))) << slider;
    }

    int touches_ = 0;
};

TEST_F(SettingsWalk, FromTheSplashToSwitchingOff) {
    const Bitmap green{{64, 64}, std::vector<std::uint32_t>(64 * 64, 0xff00c000)};
    ASSERT_FALSE(writePng(home_ / "leaf.png", green));
    ASSERT_NO_FATAL_FAILURE(open());
    keepPicture("settings-zh");
    EXPECT_EQ(contents(settingsFile()), PlistPropertyLists().serialize(defaultSettings()));

    click(rig::kSwitchRole, "开启 Skavlo");
    ASSERT_TRUE(overlayComes());
    EXPECT_TRUE(touchShows(kFinger, like(kDefaultMarker)));

    // Another fill colour, by dragging in its sheet.
    click(rig::kButtonRole, "填充颜色");
    drag("红", 1);
    drag("绿", 0);
    drag("蓝", 0);
    keepPicture("colour-sheet-zh");
    click(rig::kButtonRole, "完成");
    EXPECT_THAT(colour("fillColor"), testing::ElementsAre(testing::Gt(0.98F), testing::Lt(0.02F),
                                                          testing::Lt(0.02F), 1.0F));
    EXPECT_TRUE(touchShows(kFinger, like(0xff9b1d2b)));

    // A larger circle.
    const PixelPoint outside{kFinger.x + 60, kFinger.y};
    drag("圆圈大小", 1);
    EXPECT_TRUE(settingBecomes("colorSize", 150.0));
    EXPECT_TRUE(touchShows(outside, isMarked));

    // The emoji, with a border.
    click("radio button", "以表情显示");
    EXPECT_TRUE(settingBecomes("displayMode", 2));
    click(rig::kSwitchRole, "颜色边框");
    EXPECT_TRUE(settingBecomes("emojiShowBorder", true));
    keepPicture("emoji-zh");
    EXPECT_TRUE(touchShows(kFinger, isReddish));  // an apple

    // An image of one's own, from the list of files, as no desktop offers a chooser here.
    click("radio button", "以图片显示");
    EXPECT_TRUE(settingBecomes("displayMode", 1));
    click(rig::kButtonRole, "选择自定义图片...");
    item("list item", "leaf.png");
    keepPicture("files-zh");
    click("list item", "leaf.png");
    item("alert", "成功");
    keepPicture("alert-zh");
    click(rig::kButtonRole, "确定");
    EXPECT_TRUE(settingBecomes("imagePath", customImage()));
    EXPECT_EQ(contents(customImage()), contents(home_ / "leaf.png"));
    EXPECT_TRUE(touchShows(kFinger, like(0xff0e862b)));

    // The other language.
    click(rig::kButtonRole, "语言: 中 / EN");
    item("heading", "Launch Settings");
    EXPECT_TRUE(settingBecomes("isEnglish", 1));
    keepPicture("image-en");

    // Only while the screen is recorded, which nobody does here.
    click(rig::kSwitchRole, "Show in Record Only");
    EXPECT_TRUE(settingBecomes("onlyShowInRecord", true));
    EXPECT_TRUE(touchShowsNothing());

    // Everything back, except for the language, the mode and the record-only choice.
    click(rig::kButtonRole, "Restore Settings");
    item("alert", "Restore Settings");
    keepPicture("restore-en");
    click(rig::kButtonRole, "Restore");
    EXPECT_TRUE(settingBecomes("colorSize", 55.0));
    PropertyDictionary restored = defaultSettings();
    restored["isEnglish"] = true;
    restored["onlyShowInRecord"] = true;
    restored["displayMode"] = 1;
    EXPECT_EQ(contents(settingsFile()), PlistPropertyLists().serialize(restored));
    EXPECT_FALSE(std::filesystem::exists(customImage()));
    EXPECT_TRUE(goes("alert", "Restore Settings"));

    click(rig::kSwitchRole, "Enable Skavlo");
    EXPECT_TRUE(overlayGoes());
    EXPECT_FALSE(std::filesystem::exists(pidFile()));
}

TEST_F(SettingsWalk, DarkModeFollowsTheDesktopWhileItRuns) {
    ASSERT_NO_FATAL_FAILURE(open());
    // In the margin beside the rows, and in the first row.
    const auto isDark = [](const Bitmap& screen) {
        return at(screen, 8, 400) == 0xff000000 && at(screen, 200, 245) == 0xff1c1c1e;
    };
    const auto isLight = [](const Bitmap& screen) {
        return at(screen, 8, 400) == 0xfff2f2f7 && at(screen, 200, 245) == 0xffffffff;
    };
    captureUntil(isLight, "the light screen");
    auto portal = rig::DesktopPortal::start(false);
    ASSERT_TRUE(portal) << portal.error().message;
    portal->setDark(true);
    captureUntil(isDark, "the dark screen");
    keepPicture("settings-zh-dark");
    click("radio button", "以表情显示");
    EXPECT_TRUE(settingBecomes("displayMode", 2));
    keepPicture("emoji-zh-dark");
    click("radio button", "以颜色显示");
    click(rig::kButtonRole, "语言: 中 / EN");
    item("heading", "Launch Settings");
    keepPicture("settings-en-dark");
    portal->setDark(false);
    captureUntil(isLight, "the light screen again");
    keepPicture("settings-en");
}

}  // namespace
}  // namespace skavlo
