#include "tests/unit/ui/settings_fixture.h"
#include "ui/setting_tags.h"

namespace skavlo {
namespace {

TEST(SettingTags, TwentyNineKeys) {
    const char* keys[] = {"colorAlpha",
                          "colorSize",
                          "colorBorderWidth",
                          "colorLiftScale",
                          "colorAnimDuration",
                          "",
                          "",
                          "",
                          "",
                          "",
                          "imageAlpha",
                          "imageSize",
                          "imageLiftScale",
                          "imageAnimDuration",
                          "",
                          "",
                          "",
                          "",
                          "",
                          "",
                          "emojiAlpha",
                          "emojiSize",
                          "emojiLiftScale",
                          "emojiAnimDuration",
                          "",
                          "",
                          "emojiBorderAlpha",
                          "emojiFillAlpha",
                          "emojiBorderWidth"};
    ASSERT_EQ(std::size(keys), 29U);
    for (int tag = 10; tag <= 38; ++tag) EXPECT_STREQ(settingKeyForTag(tag), keys[tag - 10]) << tag;
    for (const int tag : {-1, 0, 9, 39, 1010}) EXPECT_STREQ(settingKeyForTag(tag), "") << tag;
}

TEST(SettingTags, StepsOfTheButtons) {
    for (int tag = 0; tag <= 50; ++tag) {
        const float expected = tag == 11 || tag == 21 || tag == 31 ? 1.0F
                               : tag == 12 || tag == 38            ? 0.5F
                                                                   : 0.1F;
        EXPECT_EQ(sliderStepForTag(tag), expected) << tag;
    }
}

class ValueControls : public SettingsFixture {
  protected:
    // The slider's row in the table, in whatever mode it is.
    std::shared_ptr<SliderRow> sliderRow(int tag) {
        settings()["displayMode"] = tag / 10 - 1;
        settings()["emojiShowBorder"] = true;
        for (int row = 0; row < controller->numberOfRowsInSection(kDisplaySection); ++row) {
            auto result = displayCell(row)->sliderRow;
            if (result && result->slider.tag == tag) return result;
        }
        ADD_FAILURE() << "no slider " << tag;
        return nullptr;
    }
    static void dragTo(SliderRow& row, float value) {
        row.slider.setValue(value);
        row.valueChanged(row.slider);
    }
    [[nodiscard]] double stored(const char* key) const {
        const auto* value = settings().at(key).as<double>();
        return value ? *value : -1;
    }
};

TEST_F(ValueControls, AnotherModeIsStoredShownAndSaved) {
    load();
    controller->skv_displayModeChanged(SKVFakeSwitch(2));
    loop.runPosted();
    EXPECT_EQ(settings().at("displayMode"), PropertyValue(2));
    EXPECT_EQ(log.whats(), (Strings{"reloadSection 2", kWrite}));
}

TEST_F(ValueControls, TheSameModeSavesNothing) {
    load({{"displayMode", "1"}});
    controller->skv_displayModeChanged(SKVFakeSwitch(1));
    loop.runPosted();
    EXPECT_TRUE(log.events.empty());
    EXPECT_EQ(settings().at("displayMode"), PropertyValue("1"));
}

TEST_F(ValueControls, EveryStepOfAColourDragIsSaved) {
    struct Well {
        int mode;
        int row;
        const char* key;
    };
    for (const Well& well : {Well{0, 3, "fillColor"}, Well{0, 4, "borderColor"},
                             Well{2, 9, "emojiFillColor"}, Well{2, 10, "emojiBorderColor"}}) {
        load({{"displayMode", well.mode}, {"emojiShowBorder", true}});
        controller->skv_overlayEnabled = true;
        const auto control = displayControl<ColorWell>(well.row);
        EXPECT_EQ(control->key, well.key);
        for (const double red : {0.125, 0.25}) {
            control->selectedColor = {red, 0.5, 0.75, 1};
            control->valueChanged(*control);
            EXPECT_EQ(settings().at(well.key), PropertyValue(PropertyArray{red, 0.5, 0.75, 1.0}));
        }
        loop.runPosted();
        EXPECT_EQ(log.whats(), (Strings{kWrite, kReload, kWrite, kReload}));
    }
}

TEST_F(ValueControls, ASliderMoveStoresSinglePrecisionAndSavesWhenItEnds) {
    load();
    const auto row = sliderRow(10);
    std::vector<bool> changes;
    row->didChange = [&](bool animated) { changes.push_back(animated); };
    dragTo(*row, 0.6F);
    EXPECT_EQ(row->valueLabel.text, "0.6");
    EXPECT_EQ(stored("colorAlpha"), 0.60000002384185791);
    EXPECT_EQ(changes, (std::vector{false, false}));
    loop.runPosted();
    EXPECT_TRUE(log.events.empty());
    row->editingEnded(row->slider);
    loop.runPosted();
    EXPECT_EQ(log.whats(), Strings{kWrite});
}

TEST_F(ValueControls, EverySliderStoresUnderItsKey) {
    load();
    const std::pair<int, const char*> sliders[] = {
        {10, "colorAlpha"},        {11, "colorSize"},         {12, "colorBorderWidth"},
        {13, "colorLiftScale"},    {14, "colorAnimDuration"}, {20, "imageAlpha"},
        {21, "imageSize"},         {22, "imageLiftScale"},    {23, "imageAnimDuration"},
        {30, "emojiAlpha"},        {31, "emojiSize"},         {32, "emojiLiftScale"},
        {33, "emojiAnimDuration"}, {36, "emojiBorderAlpha"},  {37, "emojiFillAlpha"},
        {38, "emojiBorderWidth"}};
    for (const auto& [tag, key] : sliders) {
        const auto row = sliderRow(tag);
        const float value = (row->slider.minimumValue + row->slider.maximumValue) / 2;
        dragTo(*row, value);
        EXPECT_EQ(stored(key), static_cast<double>(value));
    }
}

TEST_F(ValueControls, ASliderOfAnUnknownTagStoresUnderTheEmptyKey) {
    load();
    SliderRow row("", 15, 0, 10, 3);
    controller->skv_sliderValueChanged(row.slider);
    EXPECT_EQ(stored(""), 3);
}

struct StepCase {
    const char* name;
    int tag;
    float from;
    bool plus;
    float to;
    const char* label;
};
class Step : public ValueControls, public testing::WithParamInterface<StepCase> {};

TEST_P(Step, MovesRoundsClampsAndSaves) {
    const StepCase& step = GetParam();
    load();
    const auto row = sliderRow(step.tag);
    dragTo(*row, step.from);
    std::vector<bool> changes;
    row->didChange = [&](bool animated) { changes.push_back(animated); };
    if (step.plus) {
        row->plusTapped(row->plus);
    } else {
        row->minusTapped(row->minus);
    }
    EXPECT_EQ(row->slider.value(), step.to);
    EXPECT_EQ(row->valueLabel.text, step.label);
    EXPECT_EQ(stored(settingKeyForTag(step.tag)), static_cast<double>(step.to));
    EXPECT_EQ(changes, (std::vector{true, false})) << "the slider glides, then its label changes";
    loop.runPosted();
    EXPECT_EQ(log.whats(), Strings{kWrite});
}

INSTANTIATE_TEST_SUITE_P(
    Cases, Step,
    testing::Values(StepCase{"PlusAtTheLargestSize", 11, 150, true, 150, "150.0"},
                    StepCase{"MinusAtTheLeastOpacity", 10, 0.1F, false, 0.1F, "0.1"},
                    StepCase{"MinusToTheLeastBorder", 12, 0.5F, false, 0, "0.0"},
                    StepCase{"PlusToTheLongestDuration", 14, 9.95F, true, 10, "10.0"},
                    StepCase{"PlusFromASizeBetween", 11, 55.37F, true, 56.4F, "56.4"},
                    StepCase{"MinusFromASizeBetween", 11, 55.37F, false, 54.4F, "54.4"},
                    StepCase{"PlusAtTheLeastBorder", 12, 0, true, 0.5F, "0.5"},
                    StepCase{"PlusAtTheLargestEmojiBorder", 38, 15, true, 15, "15.0"},
                    StepCase{"PlusFromAnEmojiBorderBetween", 38, 0.25F, true, 0.8F, "0.8"},
                    StepCase{"MinusToTheLeastBorderOpacity", 36, 0.04F, false, 0, "0.0"},
                    StepCase{"PlusFromALiftScaleBetween", 13, 0.75F, true, 0.9F, "0.9"},
                    StepCase{"MinusAtTheLeastImageSize", 21, 10, false, 10, "10.0"},
                    StepCase{"PlusToTheLargestEmojiSize", 31, 224.5F, true, 225, "225.0"},
                    StepCase{"PlusAtHalfTheFillOpacity", 37, 0.5F, true, 0.6F, "0.6"}),
    [](const auto& suite) { return std::string(suite.param.name); });

TEST_F(ValueControls, AStepWithoutItsSliderDoesNothing) {
    load();
    const PropertyDictionary before = settings();
    const auto row = sliderRow(11);
    settings() = before;
    StepperButton stray{1099, *row};
    controller->skv_stepperMinusTapped(stray);
    controller->skv_stepperPlusTapped(row->minus);
    loop.runPosted();
    EXPECT_EQ(settings(), before);
    EXPECT_TRUE(log.events.empty());
}

TEST_F(ValueControls, TrackingSwitchesStoreBooleans) {
    load();
    for (const auto& [tag, key] : {std::pair{15, "colorTracking"}, std::pair{24, "imageTracking"},
                                   std::pair{34, "emojiTracking"}}) {
        SKVFakeSwitch sender(tag);
        for (const bool on : {true, false}) {
            log.restart();
            sender.setOn(on);
            controller->skv_displaySwitchChanged(sender);
            loop.runPosted();
            EXPECT_EQ(settings().at(key), PropertyValue(on));
            EXPECT_EQ(log.whats(), Strings{kWrite});
        }
    }
}

TEST_F(ValueControls, TheBorderSwitchReloadsTheSection) {
    load({{"displayMode", 2}});
    const auto border = displayControl<SKVFakeSwitch>(8);
    border->touchUpInside();
    loop.runPosted();
    EXPECT_EQ(settings().at("emojiShowBorder"), PropertyValue(true));
    EXPECT_EQ(log.whats(), (Strings{"reloadSection 2", kWrite}));
}

TEST_F(ValueControls, ASwitchOfAnUnknownTagStoresUnderTheEmptyKey) {
    load();
    PropertyDictionary expected = settings();
    SKVFakeSwitch sender(99);
    sender.setOn(true);
    controller->skv_displaySwitchChanged(sender);
    loop.runPosted();
    expected[""] = true;
    EXPECT_EQ(settings(), expected);
    EXPECT_EQ(log.whats(), Strings{kWrite});
    EXPECT_EQ(SettingsFixture::stored(), expected);
}

TEST_F(ValueControls, AnEmptiedEmojiFieldFallsBackToTheApple) {
    load({{"displayMode", 2}, {"emojiString", "x"}});
    const auto field = displayControl<EmojiField>(3);
    Strings told;
    field->didChange = [&] { told.push_back("shows " + field->text); };
    field->resignFirstResponder = [&] { told.emplace_back("resigns"); };
    field->text = "";
    field->editingDidEnd(*field);
    loop.runPosted();
    EXPECT_EQ(field->text, "🍎");
    EXPECT_EQ(settings().at("emojiString"), PropertyValue("🍎"));
    EXPECT_EQ(told, (Strings{"shows 🍎", "resigns"}));
    EXPECT_EQ(log.whats(), Strings{kWrite});
}

TEST_F(ValueControls, TheEmojiTextIsStoredAsItIs) {
    load({{"displayMode", 2}});
    const auto field = displayControl<EmojiField>(3);
    field->text = "  any text, however long 👩‍👩‍👧 ";
    field->editingDidEnd(*field);
    EXPECT_EQ(settings().at("emojiString"),
              PropertyValue("  any text, however long 👩‍👩‍👧 "));
}

}  // namespace
}  // namespace skavlo
