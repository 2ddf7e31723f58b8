// Switches, sliders and the emoji field, worked with real events.
#include <QTouchEvent>
#include <cmath>

#include "tests/unit/screen/screen_fixture.h"

namespace skavlo {
namespace {

using ScreenSwitch = ScreenFixture;

TEST_F(ScreenSwitch, TapGlidesForAQuarterOfASecond) {
    open();
    QQuickItem* itsSwitch = inRow(2, 10, "switch");
    reveal(itsSwitch);
    ASSERT_EQ(find("thumb", itsSwitch)->x(), 22);
    click(itsSwitch);
    EXPECT_FALSE(boolValue(lookUp(settings(), "colorTracking")));
    EXPECT_EQ(count(kWrite), 1);
    EXPECT_EQ(find("thumb", itsSwitch)->x(), 22);
    step(125);
    EXPECT_NEAR(find("thumb", itsSwitch)->x(), 12, 0.2);
    step(130);
    EXPECT_EQ(find("thumb", itsSwitch)->x(), 2);
    EXPECT_EQ(find("track", itsSwitch)->property("color").value<QColor>(), QColor("#E5E5EA"));
}

TEST_F(ScreenSwitch, RestoringTheDefaultsLetsBothTouchSwitchesGlide) {
    open();
    click(inRow(1, 2, "switch"));
    step(260);
    QQuickItem* const before = inRow(1, 2, "switch");
    ASSERT_EQ(find("thumb", before)->x(), 22);
    ASSERT_EQ(find("thumb", inRow(1, 1, "switch"))->x(), 2);
    controller->skv_restoreDefaults();
    settle();
    ASSERT_NE(inRow(1, 2, "switch"), before) << "the reload makes new rows";
    const auto thumbX = [this](int row) { return find("thumb", inRow(1, row, "switch"))->x(); };
    EXPECT_EQ(thumbX(1), 2);
    EXPECT_EQ(thumbX(2), 22);
    step(125);
    EXPECT_NEAR(thumbX(1), 12, 0.2);
    EXPECT_NEAR(thumbX(2), 12, 0.2);
    step(130);
    EXPECT_EQ(thumbX(1), 22);
    EXPECT_EQ(thumbX(2), 2);
}

TEST_F(ScreenSwitch, AReloadHalfwayNeitherHaltsNorProlongsTheGlide) {
    open();
    click(inRow(1, 2, "switch"));
    step(125);
    screen->reloadData();
    settle();
    EXPECT_NEAR(find("thumb", inRow(1, 2, "switch"))->x(), 12, 0.2);
    step(65);
    const double late = find("thumb", inRow(1, 2, "switch"))->x();
    EXPECT_GT(late, 16);
    EXPECT_LT(late, 22);
    step(65);
    EXPECT_EQ(find("thumb", inRow(1, 2, "switch"))->x(), 22);
    EXPECT_EQ(find("thumb", inRow(1, 1, "switch"))->x(), 2);
}

TEST_F(ScreenSwitch, SpaceTapsIt) {
    open();
    inRow(2, 10, "switch")->forceActiveFocus(Qt::TabFocusReason);
    key(Qt::Key_Space);
    EXPECT_FALSE(boolValue(lookUp(settings(), "colorTracking")));
}

TEST_F(ScreenSwitch, SetWithoutAnimationItIsThereAtOnce) {
    open();
    QQuickItem* itsSwitch = inRow(0, 0, "switch");
    ASSERT_EQ(find("thumb", itsSwitch)->x(), 2);
    controller->skv_enableSwitch->setOn(true, false);
    EXPECT_EQ(find("thumb", itsSwitch)->x(), 22);
    EXPECT_EQ(find("track", itsSwitch)->property("color").value<QColor>(), QColor("#34C759"));
}

TEST_F(ScreenSwitch, LoadingTwiceItHasOneSpinner) {
    open();
    controller->skv_enableSwitch->setLoading(true);
    controller->skv_enableSwitch->setLoading(true);
    EXPECT_EQ(findAll("spinner", inRow(0, 0, "switch")).size(), 1);
}

TEST_F(ScreenSwitch, WhileLoadingItSpinsAndTakesNoTaps) {
    open();
    QQuickItem* itsSwitch = inRow(0, 0, "switch");
    controller->skv_enableSwitch->setLoading(true);
    EXPECT_TRUE(find("spinner", itsSwitch)->isVisible());
    EXPECT_EQ(find("spinner", itsSwitch)->scale(), 0.8);
    EXPECT_EQ(frameIn(find("spinner", itsSwitch), find("thumb", itsSwitch)).center(),
              QPointF(13.5, 13.5));
    click(itsSwitch);
    key(Qt::Key_Space);
    EXPECT_FALSE(controller->skv_enableSwitch->isOn());
    controller->skv_enableSwitch->setLoading(false);
    EXPECT_FALSE(find("spinner", itsSwitch)->isVisible());
}

TEST_F(ScreenSwitch, ThatReloadsItsOwnSectionOutlivesItsTap) {
    open({.mode = 2});
    ASSERT_EQ(screen->sections()[2]->currentRowCount(), 11);
    QQuickItem* itsSwitch = inRow(2, 8, "switch");
    reveal(itsSwitch);
    click(itsSwitch);
    EXPECT_EQ(screen->sections()[2]->currentRowCount(), 16);
    step(310);
    EXPECT_EQ(find("thumb", inRow(2, 8, "switch"))->x(), 22);
    EXPECT_TRUE(inRow(2, 9, "well"));
}

class ScreenSlider : public ScreenFixture {
  protected:
    void openAtSlider(int index) {
        open();
        slider = inRow(2, index, "slider");
        reveal(slider);
    }
    [[nodiscard]] QPoint thumb() const { return middle(find("sliderThumb", slider)); }
    [[nodiscard]] QString label(int index) const {
        return inRow(2, index, "sliderValue")->property("text").toString();
    }

    QQuickItem* slider = nullptr;
};

TEST_F(ScreenSlider, DragMovesValueAndLabelAndSavesAtItsEnd) {
    openAtSlider(6);
    controller->skv_overlayEnabled = true;
    const QPoint start = thumb();
    QTest::mousePress(window.get(), Qt::LeftButton, {}, start);
    for (int x = 1; x <= 40; ++x) {
        QTest::mouseMove(window.get(), start + QPoint(x, 0));
        const float value = floatValue(lookUp(settings(), "colorSize"));
        EXPECT_EQ(label(6), QString::asprintf("%.1f", static_cast<double>(value)));
    }
    settle();
    EXPECT_EQ(count(kWrite), 0);
    const double perPoint = 140.0 / (slider->width() - 28);
    EXPECT_NEAR(static_cast<double>(floatValue(lookUp(settings(), "colorSize"))),
                55 + 40 * perPoint, perPoint);
    QTest::mouseRelease(window.get(), Qt::LeftButton, {}, start + QPoint(40, 0));
    settle();
    EXPECT_EQ(count(kWrite), 1);
    EXPECT_EQ(count(kReload), 1);
}

TEST_F(ScreenSlider, DragBeyondItsEndsStaysWithinTheRange) {
    openAtSlider(6);
    QTest::mousePress(window.get(), Qt::LeftButton, {}, thumb());
    QTest::mouseMove(window.get(), thumb() + QPoint(900, 0));
    EXPECT_EQ(floatValue(lookUp(settings(), "colorSize")), 150.0F);
    QTest::mouseMove(window.get(), thumb() - QPoint(900, 0));
    EXPECT_EQ(floatValue(lookUp(settings(), "colorSize")), 10.0F);
    QTest::mouseRelease(window.get(), Qt::LeftButton, {}, thumb());
}

TEST_F(ScreenSlider, FingerOnTheThumbIsNotTakenByTheTable) {
    openAtSlider(6);
    const std::unique_ptr<QPointingDevice> owned(QTest::createTouchDevice());
    QPointingDevice* finger = owned.get();
    const double offset = find("table")->property("contentY").toDouble();
    const QPoint start = thumb();
    QTest::touchEvent(window.get(), finger).press(0, start);
    for (int i = 1; i <= 10; ++i) {
        QTest::touchEvent(window.get(), finger).move(0, start + QPoint(4 * i, 6 * i));
    }
    QTest::touchEvent(window.get(), finger).release(0, start + QPoint(40, 60));
    settle();
    EXPECT_GT(floatValue(lookUp(settings(), "colorSize")), 60.0F);
    EXPECT_EQ(find("table")->property("contentY").toDouble(), offset);
    EXPECT_EQ(count(kWrite), 1);
}

TEST_F(ScreenSlider, FingerBesideTheThumbScrollsTheTable) {
    openAtSlider(6);
    const std::unique_ptr<QPointingDevice> owned(QTest::createTouchDevice());
    QPointingDevice* finger = owned.get();
    const double offset = find("table")->property("contentY").toDouble();
    const QPoint start = thumb() + QPoint(50, 0);
    QTest::touchEvent(window.get(), finger).press(0, start);
    for (int i = 1; i <= 30; ++i) {
        QTest::touchEvent(window.get(), finger).move(0, start - QPoint(0, 8 * i));
    }
    EXPECT_GT(find("table")->property("contentY").toDouble(), offset);
    QTest::touchEvent(window.get(), finger).release(0, start - QPoint(0, 240));
    settle();
    EXPECT_EQ(floatValue(lookUp(settings(), "colorSize")), 55.0F);
    EXPECT_EQ(count(kWrite), 0);
}

TEST_F(ScreenSlider, ButtonsAndArrowKeysStep) {
    openAtSlider(6);
    click(inRow(2, 6, "plus"));
    EXPECT_EQ(label(6), QString("56.0"));
    click(inRow(2, 6, "minus"));
    click(inRow(2, 6, "minus"));
    EXPECT_EQ(label(6), QString("54.0"));
    EXPECT_EQ(count(kWrite), 3);
    slider->forceActiveFocus(Qt::TabFocusReason);
    key(Qt::Key_Right);
    EXPECT_EQ(label(6), QString("55.0"));
    key(Qt::Key_Left);
    key(Qt::Key_Left);
    EXPECT_EQ(label(6), QString("53.0"));
    EXPECT_EQ(count(kWrite), 6);
    step(200);
    EXPECT_NEAR(find("sliderThumb", slider)->x(), (53 - 10) / 140.0 * (slider->width() - 28), 0.01);
}

class ScreenEmojiField : public ScreenFixture {
  protected:
    void openField() {
        open({.mode = 2});
        field = inRow(2, 3, "emojiField");
        reveal(field);
    }
    [[nodiscard]] QString text() const { return field->property("text").toString(); }
    [[nodiscard]] std::string storedEmoji() const {
        const PropertyDictionary now = stored();
        const PropertyValue* value = lookUp(now, "emojiString");
        const std::string* text = value ? value->as<std::string>() : nullptr;
        return text ? *text : "";
    }
    void input(const QString& preedit, const QString& commit) {
        QInputMethodEvent event(preedit, {});
        event.setCommitString(commit);
        QCoreApplication::sendEvent(field, &event);
    }

    QQuickItem* field = nullptr;
};

TEST_F(ScreenEmojiField, BackspaceRemovesAWholeCharacter) {
    openField();
    click(field);
    key(Qt::Key_End);
    const QString family = QString::fromUtf8("👨‍👩‍👧‍👦");
    const QString thumb = QString::fromUtf8("👍🏽");
    input({}, family + thumb);
    EXPECT_EQ(text(), QString::fromUtf8("🍎") + family + thumb);
    key(Qt::Key_Backspace);
    EXPECT_EQ(text(), QString::fromUtf8("🍎") + family);
    key(Qt::Key_Backspace);
    EXPECT_EQ(text(), QString::fromUtf8("🍎"));
    key(Qt::Key_Backspace);
    EXPECT_EQ(text(), QString());
    EXPECT_EQ(count(kWrite), 0);
}

TEST_F(ScreenEmojiField, ReturnEndsEditingAndSavesOnce) {
    openField();
    click(field);
    input({}, QString::fromUtf8("🌈"));
    key(Qt::Key_Return);
    EXPECT_FALSE(field->hasActiveFocus());
    EXPECT_EQ(count(kWrite), 1);
    EXPECT_NE(storedEmoji().find("🌈"), std::string::npos);
}

TEST_F(ScreenEmojiField, EmptyTextBecomesTheDefault) {
    openField();
    click(field);
    key(Qt::Key_A, Qt::ControlModifier);
    key(Qt::Key_Delete);
    ASSERT_EQ(text(), QString());
    key(Qt::Key_Return);
    EXPECT_EQ(text(), QString::fromUtf8("🍎"));
    EXPECT_EQ(storedEmoji(), "🍎");
}

TEST_F(ScreenEmojiField, PreeditIsCommittedWhenATapOnARowEndsEditing) {
    openField();
    click(field);
    key(Qt::Key_A, Qt::ControlModifier);
    key(Qt::Key_Delete);
    input(QString::fromUtf8("星"), {});
    EXPECT_EQ(text(), QString());  // not committed yet
    click(row(2, 2));              // the mode in force: ends editing and nothing else
    EXPECT_EQ(storedEmoji(), "星");
    EXPECT_EQ(text(), QString::fromUtf8("星"));
    EXPECT_FALSE(field->hasActiveFocus());
}

TEST_F(ScreenEmojiField, FocusThatMovesOnEndsEditing) {
    openField();
    click(field);
    input({}, QString::fromUtf8("🌙"));
    key(Qt::Key_Tab);
    EXPECT_EQ(count(kWrite), 1);
    EXPECT_NE(storedEmoji().find("🌙"), std::string::npos);
}

TEST_F(ScreenEmojiField, GridPutsAnEmojiIn) {
    openField();
    click(inRow(2, 3, "emojiButton"));
    step(300);
    const QList<QQuickItem*> emojis = findAll("emoji");
    ASSERT_GT(emojis.size(), 30);
    const QString chosen = emojis[9]->property("modelData").toString();
    click(emojis[9]);
    EXPECT_EQ(text(), chosen);
    EXPECT_EQ(storedEmoji(), chosen.toStdString());
    EXPECT_FALSE(screen->emojiSheet());
}

}  // namespace
}  // namespace skavlo
