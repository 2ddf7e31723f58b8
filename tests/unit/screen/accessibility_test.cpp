// What a screen reader is told, in process.
#include <QAccessible>
#include <QFile>
#include <QTemporaryDir>

#include "tests/unit/screen/screen_fixture.h"

namespace skavlo {
namespace {

class ScreenAccessibility : public ScreenFixture {
  protected:
    static QAccessibleInterface* of(QObject* item) {
        return QAccessible::queryAccessibleInterface(item);
    }
    static QString name(QObject* item) { return of(item)->text(QAccessible::Name); }
    static bool offers(QObject* item, const QString& action) {
        return of(item)->actionInterface()->actionNames().contains(action);
    }
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

TEST_F(ScreenAccessibility, TheLinkOpensTheChannel) {
    open();
    QQuickItem* link = find("aboutLink");
    EXPECT_TRUE(of(link)->state().focusable);
    ASSERT_TRUE(offers(link, QAccessibleActionInterface::pressAction()));
    act(link, QAccessibleActionInterface::pressAction());
    EXPECT_EQ(openedLinks, std::vector<QString>{"https://channel.example"});
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

class ColorSheetAccessibility : public ScreenAccessibility {
  protected:
    void openSheet() {
        open();
        act(inRow(2, 3, "well"), QAccessibleActionInterface::pressAction());
        settle();
        step(300);
        ASSERT_TRUE(screen->colorPicker());
        screen->colorPicker()->setHex("#FF804020");
        settle();
    }
    [[nodiscard]] QObject* bar(const char* itsName) const {
        // A component's bar is the part of it that is read.
        QQuickItem* item = find(itsName);
        for (QQuickItem* part : item->childItems()) {
            const QAccessibleInterface* spoken = of(part);
            if (spoken && spoken->role() == QAccessible::Slider) return part;
        }
        return item;
    }
};

TEST_F(ColorSheetAccessibility, EveryPartHasRoleNameAndActions) {
    openSheet();
    QQuickItem* spectrum = find("spectrum");
    EXPECT_EQ(of(spectrum)->role(), QAccessible::ColorChooser);
    EXPECT_EQ(name(spectrum), QString("Saturation and Brightness"));
    EXPECT_EQ(of(spectrum)->text(QAccessible::Description), screen->colorPicker()->hex());
    const std::pair<const char*, const char*> bars[] = {{"hueBar", "Hue"},
                                                        {"redBar", "Red"},
                                                        {"greenBar", "Green"},
                                                        {"blueBar", "Blue"},
                                                        {"alphaBar", "Opacity"}};
    for (const auto& [item, itsName] : bars) {
        QObject* slider = bar(item);
        EXPECT_EQ(of(slider)->role(), QAccessible::Slider) << item;
        EXPECT_EQ(name(slider), QString(itsName));
        EXPECT_TRUE(of(slider)->state().focusable) << item;
        EXPECT_TRUE(offers(slider, QAccessibleActionInterface::increaseAction())) << item;
        EXPECT_TRUE(offers(slider, QAccessibleActionInterface::decreaseAction())) << item;
    }
    EXPECT_EQ(of(find("hexField"))->role(), QAccessible::EditableText);
    EXPECT_EQ(name(find("hexField")), QString("Hex Color"));
    QQuickItem* closes = find("closeButton", find("colorSheet"));
    EXPECT_EQ(of(closes)->role(), QAccessible::Button);
    EXPECT_EQ(name(closes), QString("Done"));
    act(closes, QAccessibleActionInterface::pressAction());
    EXPECT_FALSE(screen->colorPicker());
}

TEST_F(ColorSheetAccessibility, BarsAreReadSetAndStepped) {
    openSheet();
    QAccessibleValueInterface* red = of(bar("redBar"))->valueInterface();
    ASSERT_TRUE(red);
    EXPECT_EQ(red->minimumValue().toDouble(), 0);
    EXPECT_EQ(red->maximumValue().toDouble(), 1);
    EXPECT_NEAR(red->currentValue().toDouble(), 1, 1e-6);
    red->setCurrentValue(0.25);
    EXPECT_NEAR(screen->colorPicker()->red(), 0.25, 1e-6);
    act(bar("redBar"), QAccessibleActionInterface::increaseAction());
    EXPECT_NEAR(screen->colorPicker()->red(), 0.26, 1e-6);
    // What it shows still follows the colour.
    screen->colorPicker()->setRed(0.75);
    EXPECT_NEAR(red->currentValue().toDouble(), 0.75, 1e-6);
    red->setCurrentValue(7.0);
    EXPECT_EQ(screen->colorPicker()->red(), 1);
    EXPECT_EQ(red->currentValue().toDouble(), 1);
    QAccessibleValueInterface* hue = of(bar("hueBar"))->valueInterface();
    hue->setCurrentValue(0.5);
    EXPECT_NEAR(screen->colorPicker()->hue(), 0.5, 1e-6);
    const double saturation = screen->colorPicker()->saturation();
    act(find("spectrum"), QAccessibleActionInterface::decreaseAction());
    EXPECT_NEAR(screen->colorPicker()->saturation(), saturation - 0.01, 1e-6);
}

TEST_F(ScreenAccessibility, FilesAreListItemsThatArePressed) {
    const QTemporaryDir home;
    qputenv("HOME", home.path().toUtf8());
    for (int i = 0; i < 40; ++i) {
        QFile file(home.filePath(QString::asprintf("%02d.png", i)));
        ASSERT_TRUE(file.open(QFile::WriteOnly));
    }
    open({.height = 400, .mode = 1});
    screen->presentDocumentPicker();
    settle();
    step(300);
    QQuickItem* list = find("fileListView");
    EXPECT_EQ(of(list)->role(), QAccessible::List);
    EXPECT_EQ(name(list), home.path());
    const auto entry = [&](const QString& file) -> QQuickItem* {
        for (QQuickItem* item : findAll("fileEntry", list)) {
            if (item->property("name").toString() == file) return item;
        }
        return nullptr;
    };
    ASSERT_TRUE(entry(".."));
    EXPECT_EQ(name(entry("..")), screen->texts().parentFolder);
    EXPECT_FALSE(entry("39.png")) << "a long folder is not read all at once";
    for (int i = 0; i < 40; ++i) {
        key(Qt::Key_Down);
        step(300);
        QQuickItem* item = window->activeFocusItem();
        EXPECT_EQ(of(item)->role(), QAccessible::ListItem) << i;
        EXPECT_EQ(name(item), QString::asprintf("%02d.png", i));
        EXPECT_TRUE(of(item)->state().focusable) << i;
        EXPECT_TRUE(of(item)->state().focused) << i;
        EXPECT_TRUE(offers(item, QAccessibleActionInterface::pressAction())) << i;
    }
    files.files.writeAtomically(home.filePath("39.png").toStdString(), "picture");
    act(entry("39.png"), QAccessibleActionInterface::pressAction());
    settle();
    EXPECT_FALSE(screen->fileList());
    EXPECT_EQ(files.files.read(directory.customImageFile()), "picture");
}

}  // namespace
}  // namespace skavlo
