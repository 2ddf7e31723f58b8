// Alerts, the colour sheet and the list of image files.
#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include "tests/unit/screen/screen_fixture.h"

namespace skavlo {
namespace {

class ScreenAlert : public ScreenFixture {
  protected:
    void openRestoreAlert() {
        open();
        QQuickItem* restore = row(2, 11);
        reveal(restore);
        click(restore);
        step(260);
        ASSERT_TRUE(screen->alert());
    }
};

TEST_F(ScreenAlert, StandsInTheMiddleWithItsTexts) {
    openRestoreAlert();
    QQuickItem* alert = find("alert");
    EXPECT_EQ(alert->width(), 270);
    EXPECT_NEAR(frameIn(alert, window->contentItem()).center().x(), 195, 0.51);
    EXPECT_NEAR(frameIn(alert, window->contentItem()).center().y(), 422, 0.51);
    EXPECT_EQ(find("alertTitle")->property("text"), QString("Restore Settings"));
    EXPECT_EQ(find("alertMessage")->property("text"),
              QString("Are you sure you want to restore all display settings to default?"));
    QQuickItem* cancel = find("alertAction0");
    QQuickItem* restore = find("alertAction1");
    EXPECT_EQ(cancel->property("text"), QString("Cancel"));
    EXPECT_EQ(restore->property("text"), QString("Restore"));
    EXPECT_EQ(cancel->property("weight"), QFont::Bold);
    EXPECT_EQ(restore->property("textColor").value<QColor>(), QColor("#FF3B30"));
    EXPECT_EQ(frameIn(restore, alert).x(), 135);
}

TEST_F(ScreenAlert, FitsIntoTheSmallestWindow) {
    open({.width = 320, .height = 320});
    for (int language = 0; language < 2; ++language) {
        screen->showInfo();  // the one with the longest message
        settle();
        step(260);
        const QRectF alert = frameIn(find("alert"), window->contentItem());
        EXPECT_TRUE(QRectF(0, 0, 320, 320).contains(alert)) << alert.height();
        key(Qt::Key_Escape);
        step(210);
        EXPECT_FALSE(screen->alert());
        screen->toggleLanguage();
        settle();
    }
}

// Title, message and actions of each alert, in both languages, as the person sees them.
class ScreenAlertTexts : public ScreenFixture, public testing::WithParamInterface<bool> {
  protected:
    void expectAlert(TextId title, TextId message, const std::vector<TextId>& actions) {
        settle();
        step(260);
        EXPECT_EQ(shownIn("alertTitle"), text(title));
        EXPECT_EQ(shownIn("alertMessage"), text(message));
        for (std::size_t i = 0; i < actions.size(); ++i) {
            EXPECT_EQ(shownIn("alertAction" + QString::number(i)), text(actions[i]));
        }
        EXPECT_FALSE(find("alertAction" + QString::number(actions.size())));
        key(Qt::Key_Escape);
        step(260);
    }

  private:
    [[nodiscard]] QString shownIn(const QString& name) const {
        const QQuickItem* item = find(name);
        return item && item->isVisible() ? item->property("text").toString() : QString();
    }
    [[nodiscard]] static QString text(TextId id) {
        const Text& both = textPair(id);
        return QString::fromUtf8(GetParam() ? both.en : both.zh);
    }
};

TEST_P(ScreenAlertTexts, AreThoseOfTheTable) {
    QTemporaryDir home;
    const std::string picture = home.filePath("picture.png").toStdString();
    files.files.writeAtomically(picture, "picture");
    open({.mode = 1, .english = GetParam(), .portal = true});
    click(find("infoButton"));
    expectAlert(TextId::appIntro, TextId::appIntroMessage, {TextId::ok});
    screen->presentDocumentPicker();
    askedForImage.at(0)(QString::fromStdString(picture));
    expectAlert(TextId::success, TextId::imageLoaded, {TextId::ok});
    QQuickItem* restore = row(2, screen->sections()[2]->currentRowCount() - 1);
    reveal(restore);
    click(restore);
    expectAlert(TextId::restoreSettings, TextId::restoreQuestion,
                {TextId::cancel, TextId::restore});
}

INSTANTIATE_TEST_SUITE_P(Languages, ScreenAlertTexts, testing::Bool(), [](const auto& suite) {
    return std::string(suite.param ? "English" : "Chinese");
});

TEST_F(ScreenAlert, EscapeCancels) {
    openRestoreAlert();
    settings()["colorSize"] = 99.0;
    key(Qt::Key_Escape);
    EXPECT_EQ(find("alertLayer")->property("shown"), 1);
    step(100);
    EXPECT_NEAR(find("alertLayer")->property("shown").toDouble(), 0.5, 0.02);
    step(110);
    EXPECT_FALSE(screen->alert());
    EXPECT_FALSE(find("alertLayer")->isVisible());
    EXPECT_EQ(floatValue(lookUp(settings(), "colorSize")), 99.0F);
}

TEST_F(ScreenAlert, TabStaysWithinAndReturnChooses) {
    openRestoreAlert();
    settings()["colorSize"] = 99.0;
    EXPECT_EQ(window->activeFocusItem(), find("alertAction0"));
    key(Qt::Key_Tab);
    EXPECT_EQ(window->activeFocusItem(), find("alertAction1"));
    key(Qt::Key_Tab);
    EXPECT_EQ(window->activeFocusItem(), find("alertAction0"));
    key(Qt::Key_Right);
    EXPECT_EQ(window->activeFocusItem(), find("alertAction1"));
    key(Qt::Key_Return);
    step(210);
    EXPECT_EQ(floatValue(lookUp(settings(), "colorSize")), 55.0F);
    EXPECT_FALSE(screen->alert());
}

TEST_F(ScreenAlert, NothingBelowIsHit) {
    openRestoreAlert();
    const bool before = boolValue(lookUp(settings(), "colorTracking"));
    click(inRow(2, 10, "switch"));
    EXPECT_EQ(boolValue(lookUp(settings(), "colorTracking")), before);
    EXPECT_TRUE(screen->alert());
}

TEST_F(ScreenAlert, InfoButtonTellsWhatTheApplicationIs) {
    open();
    click(find("infoButton"));
    step(260);
    EXPECT_EQ(find("alertTitle")->property("text"), QString("App Intro"));
    click(find("alertAction0"));
    step(210);
    EXPECT_FALSE(screen->alert());
}

TEST_F(ScreenAlert, SecondOneWaitsForTheFirst) {
    open();
    screen->presentAlert({.title = "first", .message = "", .actions = {{.title = "OK"}}});
    screen->presentAlert({.title = "second", .message = "", .actions = {{.title = "OK"}}});
    step(260);
    EXPECT_EQ(screen->alert()->title(), QString("first"));
    key(Qt::Key_Escape);
    step(210);
    ASSERT_TRUE(screen->alert());
    EXPECT_EQ(screen->alert()->title(), QString("second"));
    step(260);
    key(Qt::Key_Return);
    step(210);
    EXPECT_FALSE(screen->alert());
}

class ScreenColorSheet : public ScreenFixture {
  protected:
    static constexpr QSize kLowest{320, 320};

    void openSheet(QSize size = {390, 844}) {
        open({.width = size.width(), .height = size.height()});
        QQuickItem* well = inRow(2, 3, "well");
        reveal(well);
        click(well);
        step(260);
        ASSERT_TRUE(screen->colorPicker());
    }
    void type(const char* text) {
        for (; *text; ++text) QTest::keyClick(window.get(), *text);
    }
    [[nodiscard]] QColor fill() const {
        return toQColor(skv_colorFromValue(lookUp(settings(), "fillColor"), kLightGrayColor));
    }
    static QColor toQColor(const Colour& c) {
        return QColor::fromRgbF(static_cast<float>(c.red), static_cast<float>(c.green),
                                static_cast<float>(c.blue), static_cast<float>(c.alpha));
    }
};

TEST_F(ScreenColorSheet, DragInTheSpectrumIsAStreamOfSaves) {
    openSheet();
    QQuickItem* spectrum = find("spectrum");
    const QPoint start = middle(spectrum);
    QTest::mousePress(window.get(), Qt::LeftButton, {}, start);
    settle();
    for (int x = 1; x <= 10; ++x) {
        QTest::mouseMove(window.get(), start + QPoint(4 * x, 0));
        settle();
    }
    QTest::mouseRelease(window.get(), Qt::LeftButton, {}, start + QPoint(40, 0));
    settle();
    EXPECT_GE(count(kWrite), 11);
    const double saturation = (spectrum->width() / 2 + 40) / spectrum->width();
    EXPECT_NEAR(static_cast<double>(fill().hsvSaturationF()), saturation, 0.01);
    EXPECT_NEAR(static_cast<double>(fill().valueF()), 0.5, 0.01);
    EXPECT_EQ(inRow(2, 3, "well")->property("color").value<QColor>().rgba(), fill().rgba());
}

TEST_F(ScreenColorSheet, BarsAndHexSetTheColour) {
    openSheet();
    QQuickItem* red = find("redBar");
    const QRectF there = frameIn(red, window->contentItem());
    QTest::mouseClick(window.get(), Qt::LeftButton, {}, QPoint(90, there.center().toPoint().y()));
    settle();
    EXPECT_EQ(fill().red(), 0);
    QQuickItem* hex = find("hexField");
    click(hex);
    key(Qt::Key_A, Qt::ControlModifier);
    type("#12AB3480");
    key(Qt::Key_Return);
    EXPECT_EQ(fill().rgba(), QColor(0x12, 0xab, 0x34, 0x80).rgba());
    EXPECT_EQ(find("preview")->property("color").value<QColor>().rgba(), fill().rgba());
    key(Qt::Key_A, Qt::ControlModifier);
    type("nonsense");
    key(Qt::Key_Return);
    EXPECT_EQ(hex->property("text"), QString("#12AB3480"));
    EXPECT_EQ(fill().rgba(), QColor(0x12, 0xab, 0x34, 0x80).rgba());
}

TEST_F(ScreenColorSheet, HueSurvivesGrey) {
    openSheet();
    screen->colorPicker()->setHue(0.6);
    EXPECT_EQ(fill().hsvSaturation(), 0);  // the default colour is a grey
    screen->colorPicker()->setSpectrum(1, 1);
    EXPECT_NEAR(static_cast<double>(fill().hsvHueF()), 0.6, 0.01);
}

TEST_F(ScreenColorSheet, KeyboardReachesEverythingAndEscapeCloses) {
    openSheet();
    QStringList reached;
    for (int i = 0; i < 8; ++i) {
        QQuickItem* item = window->activeFocusItem();
        reached.append(item->objectName().isEmpty() ? item->parentItem()->objectName()
                                                    : item->objectName());
        key(Qt::Key_Tab);
    }
    EXPECT_EQ(reached.join(' '),
              QString("spectrum hueBar redBar greenBar blueBar alphaBar hexField closeButton"));
    find("spectrum")->forceActiveFocus(Qt::TabFocusReason);
    const QColor before = fill();
    key(Qt::Key_Right);
    EXPECT_NE(fill().rgba(), before.rgba());
    key(Qt::Key_Escape);
    EXPECT_FALSE(screen->colorPicker());
    step(260);
    EXPECT_FALSE(find("colorSheet")->isVisible());
    EXPECT_EQ(window->activeFocusItem(), inRow(2, 3, "well"));
}

// In a window as low as it gets, the sheet scrolls.
TEST_F(ScreenColorSheet, TabKeepsTheFocusInSight) {
    openSheet(kLowest);
    const QQuickItem* panel = find("colorSheet")->property("panel").value<QQuickItem*>();
    const QRectF sight = frameIn(panel, window->contentItem());
    for (const bool forward : {true, false}) {
        for (int i = 0; i < 8; ++i) {
            const QQuickItem* item = window->activeFocusItem();
            const QRectF there = frameIn(item, window->contentItem());
            EXPECT_TRUE(sight.contains(there)) << i << " from " << there.top();
            if (forward) {
                key(Qt::Key_Tab);
            } else {
                key(Qt::Key_Backtab, Qt::ShiftModifier);
            }
        }
    }
}

class ScreenFileList : public ScreenFixture {
  protected:
    void openList() {
        qputenv("HOME", home.path().toUtf8());
        for (const char* name : {"b.png", "A.JPG", "notes.txt", "c.webp"}) {
            QFile file(home.filePath(name));
            ASSERT_TRUE(file.open(QFile::WriteOnly));
            file.write("picture");
        }
        ASSERT_TRUE(QDir(home.path()).mkdir("sub"));
        open({.mode = 1});
        QQuickItem* picker = row(2, 3);
        reveal(picker);
        click(picker);
        step(260);
        ASSERT_TRUE(screen->fileList());
    }
    [[nodiscard]] QStringList names() const {
        QStringList result;
        for (QQuickItem* entry : findAll("fileEntry")) {
            result.append(entry->property("name").toString());
        }
        result.sort();
        return result;
    }

    QTemporaryDir home;
};

using ScreenPicker = ScreenFixture;

TEST_F(ScreenPicker, CancellingChangesNothing) {
    open({.portal = true});
    screen->presentDocumentPicker();
    screen->presentDocumentPicker();  // it is open already
    ASSERT_EQ(askedForImage.size(), 1U);
    askedForImage[0](QString());
    EXPECT_FALSE(screen->fileList());
    EXPECT_FALSE(screen->alert());
    EXPECT_EQ(count(kWrite), 0);
    screen->presentDocumentPicker();
    EXPECT_EQ(askedForImage.size(), 2U);
}

TEST_F(ScreenPicker, WithoutAPortalThatAnswersTheOwnListOpens) {
    open({.portal = true});
    screen->presentDocumentPicker();
    askedForImage.at(0)(std::nullopt);
    EXPECT_TRUE(screen->fileList());
}

TEST_F(ScreenFileList, ShowsFoldersAndImagesOnly) {
    openList();
    EXPECT_EQ(names(), QStringList({"..", "A.JPG", "b.png", "c.webp", "sub"}));
    FileList& list = *screen->fileList();
    const auto nameAt = [&list](int at) {
        return list.data(list.index(at), list.roleNames().key("name")).toString();
    };
    EXPECT_EQ(nameAt(0), QString(".."));
    EXPECT_EQ(nameAt(1), QString("sub"));
    EXPECT_EQ(nameAt(2), QString("A.JPG"));
}

TEST_F(ScreenFileList, KeyboardChoosesAnImage) {
    openList();
    files.files.writeAtomically(home.filePath("A.JPG").toStdString(), "picture");
    EXPECT_TRUE(find("fileListView")->hasActiveFocus());
    key(Qt::Key_Down);
    key(Qt::Key_Down);
    key(Qt::Key_Return);
    EXPECT_FALSE(screen->fileList());
    EXPECT_EQ(files.files.read(directory.customImageFile()), "picture");
    ASSERT_TRUE(screen->alert());
    EXPECT_EQ(screen->alert()->title(), QString("Success"));
}

TEST_F(ScreenFileList, FoldersAreEnteredAndLeft) {
    openList();
    key(Qt::Key_Down);
    key(Qt::Key_Space);
    EXPECT_EQ(screen->fileList()->directory(), home.filePath("sub"));
    EXPECT_TRUE(screen->fileList()->isEmpty());
    key(Qt::Key_Backspace);
    EXPECT_EQ(screen->fileList()->directory(), home.path());
    key(Qt::Key_Escape);
    EXPECT_FALSE(screen->fileList());
    EXPECT_EQ(count(kWrite), 0);
}

}  // namespace
}  // namespace skavlo
