// What a screen reader is told, in process.
#include <QAccessible>

#include "tests/unit/screen/screen_fixture.h"

namespace skavlo {
namespace {

class ScreenAccessibility : public ScreenFixture {
  protected:
    static QAccessibleInterface* of(QObject* item) {
        return QAccessible::queryAccessibleInterface(item);
    }
    static QString name(QObject* item) { return of(item)->text(QAccessible::Name); }
    static void act(QObject* item, const QString& action) {
        of(item)->actionInterface()->doAction(action);
    }
};

TEST_F(ScreenAccessibility, HeaderSpeaksTheCurrentLanguage) {
    open();
    EXPECT_EQ(of(find("languageButton"))->role(), QAccessible::Button);
    EXPECT_EQ(name(find("languageButton")), QString("Language: EN / 中"));
    EXPECT_EQ(name(find("infoButton")), QString("App Intro"));
    EXPECT_EQ(of(find("aboutLink"))->role(), QAccessible::Link);
    EXPECT_EQ(name(find("aboutLink")), QString("https://channel.example"));
    act(find("languageButton"), QAccessibleActionInterface::pressAction());
    settle();
    EXPECT_EQ(name(find("infoButton")), QString("应用介绍"));
    EXPECT_EQ(name(inRow(0, 0, "switch")), QString("开启 Skavlo"));
}

TEST_F(ScreenAccessibility, SwitchesAreCheckBoxes) {
    open();
    QQuickItem* multi = inRow(1, 1, "switch");
    EXPECT_EQ(of(multi)->role(), QAccessible::CheckBox);
    EXPECT_EQ(name(multi), QString("Multi-Touch"));
    EXPECT_TRUE(of(multi)->state().checked);
    EXPECT_FALSE(of(inRow(1, 2, "switch"))->state().checked);
    QQuickItem* trail = inRow(2, 10, "switch");
    act(trail, QAccessibleActionInterface::pressAction());
    EXPECT_FALSE(of(trail)->state().checked);
    EXPECT_FALSE(boolValue(lookUp(settings(), "colorTracking")));
}

TEST_F(ScreenAccessibility, SlidersHaveTheirValueAndRange) {
    open();
    QQuickItem* size = inRow(2, 6, "slider");
    EXPECT_EQ(of(size)->role(), QAccessible::Slider);
    EXPECT_EQ(name(size), QString("Circle Size"));
    QAccessibleValueInterface* value = of(size)->valueInterface();
    ASSERT_TRUE(value);
    EXPECT_EQ(value->currentValue().toDouble(), 55);
    EXPECT_EQ(value->minimumValue().toDouble(), 10);
    EXPECT_EQ(value->maximumValue().toDouble(), 150);
    value->setCurrentValue(80.0);
    settle();
    EXPECT_EQ(floatValue(lookUp(settings(), "colorSize")), 80.0F);
    EXPECT_EQ(count(kWrite), 1);
    act(size, QAccessibleActionInterface::increaseAction());
    EXPECT_EQ(floatValue(lookUp(settings(), "colorSize")), 81.0F);
    EXPECT_EQ(value->currentValue().toDouble(), 81);
    EXPECT_EQ(name(inRow(2, 6, "minus")), QString("Decrease Circle Size"));
}

TEST_F(ScreenAccessibility, RowsWellsAndFieldsHaveNames) {
    open({.mode = 2, .emojiBorder = true});
    EXPECT_EQ(of(row(2, 2))->role(), QAccessible::RadioButton);
    EXPECT_TRUE(of(row(2, 2))->state().checked);
    EXPECT_FALSE(of(row(2, 0))->state().checked);
    EXPECT_EQ(name(row(2, 0)), QString("Color Mode"));
    EXPECT_EQ(of(row(2, 15))->role(), QAccessible::Button);
    EXPECT_EQ(name(row(2, 15)), QString("Restore Settings"));
    EXPECT_EQ(of(inRow(2, 3, "emojiField"))->role(), QAccessible::EditableText);
    EXPECT_EQ(name(inRow(2, 3, "emojiField")), QString("Set Emoji"));
    QQuickItem* well = inRow(2, 9, "well");
    EXPECT_EQ(name(well), QString("Emoji Fill"));
    EXPECT_EQ(of(well)->text(QAccessible::Description),
              well->property("control").value<ColorWellControl*>()->hex());
    act(well, QAccessibleActionInterface::pressAction());
    EXPECT_TRUE(screen->colorPicker());
}

}  // namespace
}  // namespace skavlo
