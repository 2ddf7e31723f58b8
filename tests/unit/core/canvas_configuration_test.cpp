#include <limits>

#include "overlay_fixture.h"
#include "settings/default_settings.h"

namespace skavlo {
namespace {

class CanvasConfiguration : public OverlayFixture {};

constexpr double kNarrow055 = 0.550000011920928955078125;

TEST_F(CanvasConfiguration, AnEmptyDictionaryGivesEveryFallback) {
    writeSettings({});
    launch();
    const auto& c = canvas();
    EXPECT_EQ(c.skv_displayMode, DisplayMode::color);
    EXPECT_FALSE(c.skv_singleFingerMode);
    EXPECT_EQ(c.skv_fillColor, (Colour{2.0 / 3, 2.0 / 3, 2.0 / 3, 1}));
    EXPECT_EQ(c.skv_borderColor, (Colour{1, 1, 1, 1}));
    EXPECT_EQ(c.skv_colorAlpha, 0.55);
    EXPECT_EQ(c.skv_colorSize, 55.0);
    EXPECT_EQ(c.skv_colorBorderWidth, 5.0);
    EXPECT_EQ(c.skv_colorLiftScale, 2.0);
    EXPECT_EQ(c.skv_colorAnimDuration, 0.5);
    EXPECT_TRUE(c.skv_colorTracking);
    EXPECT_EQ(c.skv_imageAlpha, 0.55);
    EXPECT_EQ(c.skv_imageSize, 80.0);
    EXPECT_EQ(c.skv_imageLiftScale, 2.0);
    EXPECT_EQ(c.skv_imageAnimDuration, 0.5);
    EXPECT_TRUE(c.skv_imageTracking);
    EXPECT_EQ(c.skv_customImage, nullptr);
    EXPECT_EQ(c.skv_emojiString, PropertyValue("🍎"));
    EXPECT_EQ(c.skv_emojiAlpha, 0.8);
    EXPECT_EQ(c.skv_emojiSize, 60.0);
    EXPECT_EQ(c.skv_emojiLiftScale, 2.0);
    EXPECT_EQ(c.skv_emojiAnimDuration, 0.5);
    EXPECT_TRUE(c.skv_emojiTracking);
    EXPECT_FALSE(c.skv_emojiShowBorder);
    EXPECT_EQ(c.skv_emojiBorderAlpha, 0.5);
    EXPECT_EQ(c.skv_emojiFillAlpha, 0.5);
    EXPECT_EQ(c.skv_emojiBorderWidth, 5.0);
    EXPECT_EQ(c.skv_emojiFillColor, (Colour{2.0 / 3, 2.0 / 3, 2.0 / 3, 1}));
    EXPECT_EQ(c.skv_emojiBorderColor, (Colour{1, 1, 1, 1}));
    EXPECT_FALSE(c.skv_isSuppressed);
}

TEST_F(CanvasConfiguration, AMissingFileGivesEveryFallbackAndShows) {
    launch();
    EXPECT_EQ(canvas().skv_colorSize, 55.0);
    EXPECT_FALSE(canvas().skv_isSuppressed);
}

TEST_F(CanvasConfiguration, ACorruptFileGivesEveryFallbackAndShows) {
    files.writeAtomically(directory.settingsFile(), "<plist><dict><key>forceHide</key><tr");
    launch();
    EXPECT_EQ(canvas().skv_colorSize, 55.0);
    EXPECT_FALSE(canvas().skv_isSuppressed);
}

TEST_F(CanvasConfiguration, AFileWhoseRootIsNoDictionaryGivesEveryFallback) {
    files.writeAtomically(directory.settingsFile(),
                          "<plist version=\"1.0\"><array><true/></array></plist>");
    launch();
    EXPECT_EQ(canvas().skv_colorSize, 55.0);
}

TEST_F(CanvasConfiguration, TheWritersDefaultsAreReadAtSinglePrecision) {
    writeSettings(defaultSettings());
    launch();
    EXPECT_EQ(canvas().skv_colorAlpha, kNarrow055);
    EXPECT_EQ(canvas().skv_imageAlpha, kNarrow055);
    EXPECT_EQ(canvas().skv_colorSize, 55.0);
    EXPECT_EQ(canvas().skv_fillColor.red, static_cast<double>(0.66F));
    EXPECT_EQ(canvas().skv_emojiFillColor.blue, static_cast<double>(0.66F));
}

TEST_F(CanvasConfiguration, EveryKeyReachesItsProperty) {
    const PropertyArray red{1, 0, 0, 1};
    const PropertyArray blue{0.0, 0.0, 1.0, 0.5};
    writeSettings(
        {{"singleFingerMode", true}, {"displayMode", 2},          {"fillColor", red},
         {"borderColor", blue},      {"colorAlpha", 0.25},        {"colorSize", 100},
         {"colorBorderWidth", 1.5},  {"colorLiftScale", 3.5},     {"colorAnimDuration", 4.0},
         {"colorTracking", false},   {"imageAlpha", 0.125},       {"imageSize", 64.0},
         {"imageLiftScale", 0.5},    {"imageAnimDuration", 2.0},  {"imageTracking", 0},
         {"emojiString", "触"},      {"emojiAlpha", 0.75},        {"emojiSize", 32.0},
         {"emojiLiftScale", 1.25},   {"emojiAnimDuration", 8.0},  {"emojiTracking", false},
         {"emojiShowBorder", 1},     {"emojiBorderAlpha", 0.375}, {"emojiFillAlpha", 0.625},
         {"emojiBorderWidth", 7.5},  {"emojiFillColor", blue},    {"emojiBorderColor", red}});
    launch();
    const auto& c = canvas();
    EXPECT_TRUE(c.skv_singleFingerMode);
    EXPECT_EQ(c.skv_displayMode, DisplayMode::emoji);
    EXPECT_EQ(c.skv_fillColor, (Colour{1, 0, 0, 1}));
    EXPECT_EQ(c.skv_borderColor, (Colour{0, 0, 1, 0.5}));
    EXPECT_EQ(c.skv_colorAlpha, 0.25);
    EXPECT_EQ(c.skv_colorSize, 100);
    EXPECT_EQ(c.skv_colorBorderWidth, 1.5);
    EXPECT_EQ(c.skv_colorLiftScale, 3.5);
    EXPECT_EQ(c.skv_colorAnimDuration, 4);
    EXPECT_FALSE(c.skv_colorTracking);
    EXPECT_EQ(c.skv_imageAlpha, 0.125);
    EXPECT_EQ(c.skv_imageSize, 64);
    EXPECT_EQ(c.skv_imageLiftScale, 0.5);
    EXPECT_EQ(c.skv_imageAnimDuration, 2);
    EXPECT_FALSE(c.skv_imageTracking);
    EXPECT_EQ(c.skv_emojiString, PropertyValue("触"));
    EXPECT_EQ(c.skv_emojiAlpha, 0.75);
    EXPECT_EQ(c.skv_emojiSize, 32);
    EXPECT_EQ(c.skv_emojiLiftScale, 1.25);
    EXPECT_EQ(c.skv_emojiAnimDuration, 8);
    EXPECT_FALSE(c.skv_emojiTracking);
    EXPECT_TRUE(c.skv_emojiShowBorder);
    EXPECT_EQ(c.skv_emojiBorderAlpha, 0.375);
    EXPECT_EQ(c.skv_emojiFillAlpha, 0.625);
    EXPECT_EQ(c.skv_emojiBorderWidth, 7.5);
    EXPECT_EQ(c.skv_emojiFillColor, (Colour{0, 0, 1, 0.5}));
    EXPECT_EQ(c.skv_emojiBorderColor, (Colour{1, 0, 0, 1}));
}

TEST_F(CanvasConfiguration, AColourOfThreeElementsIsTheDefaultColour) {
    writeSettings({{"fillColor", PropertyArray{1, 0, 0}},
                   {"borderColor", PropertyArray{1, 0, 0, 1, 1}},
                   {"emojiFillColor", "red"}});
    launch();
    EXPECT_EQ(canvas().skv_fillColor, kLightGrayColor);
    EXPECT_EQ(canvas().skv_borderColor, kWhiteColor);
    EXPECT_EQ(canvas().skv_emojiFillColor, kLightGrayColor);
}

TEST_F(CanvasConfiguration, ValuesOfTheWrongKindAreReadLoosely) {
    writeSettings({{"colorSize", "12abc"},
                   {"imageSize", PropertyArray{1, 2}},
                   {"emojiSize", true},
                   {"colorTracking", "NO"},
                   {"imageTracking", "yes"},
                   {"displayMode", "1"},
                   {"emojiString", 5},
                   {"fillColor", PropertyArray{"1", "0x10", PropertyDictionary{}, "0.5"}}});
    launch();
    EXPECT_EQ(canvas().skv_colorSize, 12);
    EXPECT_EQ(canvas().skv_imageSize, 0);
    EXPECT_EQ(canvas().skv_emojiSize, 1);
    EXPECT_FALSE(canvas().skv_colorTracking);
    EXPECT_TRUE(canvas().skv_imageTracking);
    EXPECT_EQ(canvas().skv_displayMode, DisplayMode::image);
    EXPECT_EQ(canvas().skv_emojiString, PropertyValue(5));
    EXPECT_EQ(canvas().skv_fillColor, (Colour{1, 0, 0, 0.5}));
}

TEST_F(CanvasConfiguration, AnEmojiStringThatIsNoStringDrawsTheApple) {
    writeSettings({{"displayMode", 2}, {"emojiString", 5}});
    launch();
    ASSERT_EQ(rasterizer.requests.size(), 1U);
    EXPECT_EQ(rasterizer.requests[0].what, "🍎");
}

TEST_F(CanvasConfiguration, AnEmptyEmojiStringDrawsTheApple) {
    writeSettings({{"displayMode", 2}, {"emojiString", ""}});
    launch();
    EXPECT_EQ(canvas().skv_emojiString, PropertyValue(""));
    ASSERT_EQ(rasterizer.requests.size(), 1U);
    EXPECT_EQ(rasterizer.requests[0].what, "🍎");
}

TEST_F(CanvasConfiguration, TheReloadNotificationIsAnsweredOnTheMainQueue) {
    launch();
    writeSettings({{"colorSize", 90}});
    notifications.notify_post(kReloadNotification);
    EXPECT_EQ(canvas().skv_colorSize, 55);
    loop.runPosted();
    EXPECT_EQ(canvas().skv_colorSize, 90);
}

TEST_F(CanvasConfiguration, TwoReloadsInARowEachClearAllMarkers) {
    launch();
    for (int i = 0; i < 2; ++i) {
        canvas().skv_handleTouch(1, {50, 50});
        ASSERT_EQ(scene().generations().size(), 1U);
        canvas().skv_reloadSettings();
        EXPECT_EQ(scene().generations().size(), 0U);
        EXPECT_EQ(liveMarkers(), 0U);
    }
}

class CustomImage : public OverlayFixture {
  protected:
    static constexpr const char* kPath = "/library/image";
    PropertyDictionary imageSettings(const char* path = kPath) {
        return {{"displayMode", 1}, {"imagePath", path}};
    }
};

TEST_F(CustomImage, IsLoadedWhenItsFileExists) {
    files.writeAtomically(kPath, "picture");
    writeSettings(imageSettings());
    launch();
    ASSERT_EQ(rasterizer.requests.size(), 1U);
    EXPECT_EQ(rasterizer.requests[0].what, kPath);
    EXPECT_EQ(canvas().skv_customImage, nullptr);
    rasterizer.answer();
    EXPECT_NE(canvas().skv_customImage, nullptr);
}

TEST_F(CustomImage, StaysWhenThePathNamesAMissingFile) {
    files.writeAtomically(kPath, "picture");
    writeSettings(imageSettings());
    launch();
    rasterizer.answer();
    const auto image = canvas().skv_customImage;
    reload(imageSettings("/library/none"));
    EXPECT_EQ(canvas().skv_customImage, image);
    reload({{"displayMode", 1}});
    EXPECT_EQ(canvas().skv_customImage, image);
    reload(imageSettings(""));
    EXPECT_EQ(canvas().skv_customImage, image);
}

TEST_F(CustomImage, StaysWhenItsFileIsDeleted) {
    files.writeAtomically(kPath, "picture");
    writeSettings(imageSettings());
    launch();
    rasterizer.answer();
    files.unlink(kPath);
    canvas().skv_reloadSettings();
    EXPECT_NE(canvas().skv_customImage, nullptr);
}

TEST_F(CustomImage, IsNoneWhenTheFileIsNotAReadableImage) {
    files.writeAtomically(kPath, "picture");
    writeSettings(imageSettings());
    launch();
    rasterizer.answer();
    files.writeAtomically(kPath, "garbage");
    canvas().skv_reloadSettings();
    rasterizer.answer(false);
    EXPECT_EQ(canvas().skv_customImage, nullptr);
}

TEST_F(CustomImage, IsNotLoadedAgainWhenNeitherFileNorSizeChanged) {
    files.writeAtomically(kPath, "picture");
    writeSettings(imageSettings());
    launch();
    rasterizer.answer();
    PropertyDictionary other = imageSettings();
    other["imageAlpha"] = 0.3;
    reload(other);
    EXPECT_EQ(rasterizer.requests.size(), 1U);
    other["imageSize"] = 120.0;
    reload(other);
    EXPECT_EQ(rasterizer.requests.size(), 2U);
}

TEST_F(CustomImage, OfManyChangesWhileOneLoadsOnlyTheLastIsLoaded) {
    files.writeAtomically(kPath, "picture");
    writeSettings(imageSettings());
    launch();
    PropertyDictionary other = imageSettings();
    for (const double size : {90.0, 100.0, 110.0}) {
        other["imageSize"] = size;
        reload(other);
    }
    EXPECT_EQ(rasterizer.requests.size(), 1U);
    rasterizer.answer();
    ASSERT_EQ(rasterizer.requests.size(), 2U);
    EXPECT_EQ(rasterizer.requests[1].box, 220);
    rasterizer.answer();
    EXPECT_EQ(canvas().skv_customImage->size.width, 220);
}

TEST_F(CustomImage, ShowsAStarWithoutOne) {
    writeSettings({{"displayMode", 1}});
    launch();
    canvas().skv_handleTouch(1, {100, 100});
    const auto& look = *scene().generations()[0].look;
    const auto sprite = std::get<PictureLook>(look.shape).sprite;
    ASSERT_NE(sprite, nullptr);
    const Bitmap& star = *sprite->levels()[0];
    const auto middle =
        static_cast<std::size_t>(star.size.height / 2 * star.size.width + star.size.width / 2);
    EXPECT_EQ(star.pixels[middle], 0xffffcc00U);
}

TEST_F(CustomImage, AMarkerMadeWhileItLoadsShowsItAsSoonAsItIsThere) {
    files.writeAtomically(kPath, "picture");
    writeSettings(imageSettings());
    launch();
    canvas().skv_handleTouch(1, {100, 100});
    const auto& shape = scene().generations()[0].look->shape;
    EXPECT_EQ(std::get<PictureLook>(shape).sprite, nullptr);
    rasterizer.answer();
    EXPECT_NE(std::get<PictureLook>(shape).sprite, nullptr);
}

class Emoji : public OverlayFixture {};

TEST_F(Emoji, IsDrawnOnlyInItsMode) {
    writeSettings({{"displayMode", 0}, {"emojiString", "🐶"}});
    launch();
    EXPECT_TRUE(rasterizer.requests.empty());
    reload({{"displayMode", 2}, {"emojiString", "🐶"}});
    ASSERT_EQ(rasterizer.requests.size(), 1U);
    EXPECT_EQ(rasterizer.requests[0].what, "🐶");
    EXPECT_DOUBLE_EQ(rasterizer.requests[0].fontPixels, 0.8 * rasterizer.requests[0].box);
}

TEST_F(Emoji, IsNotDrawnAgainWhenOnlyItsDiscChanges) {
    writeSettings({{"displayMode", 2}});
    launch();
    rasterizer.answer();
    reload({{"displayMode", 2}, {"emojiShowBorder", true}, {"emojiAlpha", 0.2}});
    EXPECT_EQ(rasterizer.requests.size(), 1U);
    canvas().skv_handleTouch(1, {100, 100});
    EXPECT_NE(std::get<PictureLook>(scene().generations()[0].look->shape).sprite, nullptr);
}

TEST_F(Emoji, ANewTextNeverShowsTheOldOne) {
    writeSettings({{"displayMode", 2}, {"emojiString", "A"}});
    launch();
    rasterizer.answer();
    reload({{"displayMode", 2}, {"emojiString", "B"}});
    canvas().skv_handleTouch(1, {100, 100});
    EXPECT_EQ(std::get<PictureLook>(scene().generations()[0].look->shape).sprite, nullptr);
    rasterizer.answer();
    EXPECT_NE(std::get<PictureLook>(scene().generations()[0].look->shape).sprite, nullptr);
}

TEST_F(Emoji, WithoutAPictureOfTheTextTheDiscStillShows) {
    writeSettings({{"displayMode", 2}, {"emojiShowBorder", true}});
    launch();
    rasterizer.answer(false);
    canvas().skv_handleTouch(1, {100, 100});
    const auto sprite = std::get<PictureLook>(scene().generations()[0].look->shape).sprite;
    ASSERT_NE(sprite, nullptr);
    const Bitmap& picture = *sprite->levels()[0];
    const auto middle = static_cast<std::size_t>(picture.size.height / 2 * picture.size.width +
                                                 picture.size.width / 2);
    EXPECT_NE(picture.pixels[middle], 0U);
}

}  // namespace
}  // namespace skavlo
