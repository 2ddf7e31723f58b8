// The settings application worked with fingers on a touch screen, as on a phone.
#include "settings/loose_value.h"
#include "tests/e2e/settings/settings_rig.h"

namespace skavlo {
namespace {

constexpr const char* kModeRole = "radio button";

Point middleOf(PixelPoint pixel) {
    return {pixel.x + 0.5, pixel.y + 0.5};
}

class WithFingers : public SettingsRig {
  protected:
    void tap(const std::string& role, const std::string& name) {
        touch().begin(0, middleOf(item(role, name).center()));
        touch().end(0);
    }
    // As a hand does it: some hundred reports a second.
    void move(Point from, Point to, int steps) {
        for (int step = 1; step <= steps; ++step) {
            const double share = double(step) / steps;
            touch().update(0, {from.x + (to.x - from.x) * share, from.y + (to.y - from.y) * share});
            rig::waitReadable({}, rig::Deadline(std::chrono::milliseconds(8)));
        }
        EXPECT_TRUE(touch().waitForSync(rig::Deadline(kPatience)));
    }
    void swipe(Point from, Point to, int steps) {
        touch().begin(0, from);
        move(from, to, steps);
        touch().end(0);
    }
    // Whether the pixel below the finger changes, within the border and below the switch.
    bool holdingShowsAMarker(Point place) {
        const int x = int(place.x);
        const int y = int(place.y) + 18;
        const std::uint32_t before = at(capture(), x, y);
        touch().begin(0, place);
        const rig::Deadline soon(std::chrono::milliseconds(600));
        bool seen = false;
        while (!seen && !soon.passed()) seen = at(capture(), x, y) != before;
        touch().end(0);
        return seen;
    }
    static double number(const std::string& key) {
        const PropertyDictionary now = settings();
        return floatValue(lookUp(now, key.c_str()));
    }
};

TEST_F(WithFingers, ATapDoesWhatItIsOnOnce) {
    ASSERT_NO_FATAL_FAILURE(open());
    tap(rig::kSwitchRole, "单指显示");
    EXPECT_TRUE(settingBecomes("singleFingerMode", true));
    tap(kModeRole, "以表情显示");
    EXPECT_TRUE(settingBecomes("displayMode", 2));
    tap(rig::kSwitchRole, "单指显示");
    EXPECT_TRUE(settingBecomes("singleFingerMode", false));
    tap(rig::kButtonRole, "语言: 中 / EN");
    EXPECT_TRUE(settingBecomes("isEnglish", 1));
    item("heading", "Launch Settings");
}

TEST_F(WithFingers, AFlickThatBeginsOnASwitchScrollsOnAndFlipsNothing) {
    ASSERT_NO_FATAL_FAILURE(open());
    const auto before = settings();
    const Point from = middleOf(item(rig::kSwitchRole, "单指显示").center());
    swipe(from, {from.x, from.y - 120}, 8);
    const auto heading = [this] { return item("heading", "显示设置").extents.y; };
    const int lifted = heading();
    EXPECT_TRUE(becomesTrue([&] { return heading() < lifted - 20; })) << "it glides on";
    EXPECT_EQ(settings().at("singleFingerMode"), before.at("singleFingerMode"));
}

TEST_F(WithFingers, AThumbFollowsTheFingerAndTheTableStays) {
    ASSERT_NO_FATAL_FAILURE(open());
    const auto slider = item(rig::kSliderRole, "圆圈大小");
    const double share = (*slider.value - slider.minimum) / (slider.maximum - slider.minimum);
    constexpr double kThumb = 28;
    const double track = slider.extents.width - kThumb;
    const Point thumb{slider.extents.x + kThumb / 2 + track * share, double(slider.center().y)};
    swipe(thumb, {thumb.x + track / 4, thumb.y - 40}, 20);
    const double wanted = *slider.value + (slider.maximum - slider.minimum) / 4;
    EXPECT_TRUE(becomesTrue([&] { return std::abs(number("colorSize") - wanted) < 2; }))
        << number("colorSize") << " for " << wanted;
    EXPECT_EQ(item(rig::kSliderRole, "圆圈大小").extents, slider.extents);
}

TEST_F(WithFingers, AColourIsChosenInTheSpectrum) {
    ASSERT_NO_FATAL_FAILURE(open());
    tap(rig::kButtonRole, "填充颜色");
    const auto spectrum =
        application().scrollTo("color chooser", "饱和度与亮度", rig::Deadline(kPatience));
    ASSERT_TRUE(spectrum);
    const PixelRect& place = spectrum->extents;
    // Downwards, which must not scroll, to a strong colour of half the brightness.
    swipe({place.x + 20.5, place.y + 5.5},
          {place.x + place.width - 0.5, place.y + place.height / 2.0}, 20);
    EXPECT_TRUE(becomesTrue([] {
        const PropertyDictionary now = settings();
        const auto* colour = now.at("fillColor").as<PropertyArray>();
        const auto part = [&](int index) { return floatValue(&colour->at(index)); };
        return std::abs(part(0) - 0.5) < 0.02 && part(1) < 0.02 && part(2) < 0.02;
    }));
    EXPECT_EQ(item("color chooser", "饱和度与亮度").extents, place);
    tap(rig::kButtonRole, "完成");
    EXPECT_TRUE(goes("color chooser", "饱和度与亮度"));
}

TEST_F(WithFingers, WhatIsBelowAMarkerIsTapped) {
    ASSERT_NO_FATAL_FAILURE(open());
    tap(rig::kSwitchRole, "开启 Skavlo");
    ASSERT_TRUE(overlayComes());
    // It may still be about to listen.
    const Point nowhere = middleOf(item("heading", "触摸设置").center());
    EXPECT_TRUE(becomesTrue([&] { return holdingShowsAMarker(nowhere); }));
    const Point target = middleOf(item(rig::kSwitchRole, "单指显示").center());
    EXPECT_TRUE(holdingShowsAMarker(target));
    EXPECT_TRUE(settingBecomes("singleFingerMode", true));
    tap(rig::kSwitchRole, "开启 Skavlo");
    EXPECT_TRUE(overlayGoes());
}

}  // namespace
}  // namespace skavlo
