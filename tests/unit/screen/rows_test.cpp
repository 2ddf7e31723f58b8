// Every row of every mode, selection, reloads and the header's actions.
#include <functional>
#include <tuple>

#include "tests/unit/screen/screen_fixture.h"

namespace skavlo {
namespace {

struct Mode {
    const char* name;
    int mode;
    bool border;
    std::vector<std::pair<const char*, const char*>> rows;  // Chinese, English
};

const std::vector<Mode>& modes() {
    static const std::vector<Mode> modes = {
        {"Color",
         0,
         false,
         {{"以颜色显示", "Color Mode"},
          {"以图片显示", "Image Mode"},
          {"以表情显示", "Emoji Mode"},
          {"填充颜色", "Fill Color"},
          {"边框颜色", "Border Color"},
          {"透明度", "Opacity"},
          {"圆圈大小", "Circle Size"},
          {"边框宽度", "Border Width"},
          {"抬起缩放", "Lift Scale"},
          {"动画持续", "Duration"},
          {"跟随跟踪残影", "Trailing Effect"},
          {"恢复设置", "Restore Settings"}}},
        {"Image",
         1,
         false,
         {{"以颜色显示", "Color Mode"},
          {"以图片显示", "Image Mode"},
          {"以表情显示", "Emoji Mode"},
          {"选择自定义图片...", "Select Custom Image..."},
          {"透明度", "Opacity"},
          {"图片大小", "Image Size"},
          {"抬起缩放", "Lift Scale"},
          {"动画持续", "Duration"},
          {"跟随跟踪残影", "Trailing Effect"},
          {"恢复设置", "Restore Settings"}}},
        {"EmojiWithBorder",
         2,
         true,
         {{"以颜色显示", "Color Mode"},
          {"以图片显示", "Image Mode"},
          {"以表情显示", "Emoji Mode"},
          {"设置表情", "Set Emoji"},
          {"透明度", "Opacity"},
          {"表情大小", "Emoji Size"},
          {"抬起缩放", "Lift Scale"},
          {"动画持续", "Duration"},
          {"颜色边框", "Color Border"},
          {"表情填充色", "Emoji Fill"},
          {"表情边框色", "Emoji Border"},
          {"填充透明度", "Fill Opacity"},
          {"边框透明度", "Border Opacity"},
          {"边框宽度", "Border Width"},
          {"跟随跟踪残影", "Trailing Effect"},
          {"恢复设置", "Restore Settings"}}},
        {"Emoji",
         2,
         false,
         {{"以颜色显示", "Color Mode"},
          {"以图片显示", "Image Mode"},
          {"以表情显示", "Emoji Mode"},
          {"设置表情", "Set Emoji"},
          {"透明度", "Opacity"},
          {"表情大小", "Emoji Size"},
          {"抬起缩放", "Lift Scale"},
          {"动画持续", "Duration"},
          {"颜色边框", "Color Border"},
          {"跟随跟踪残影", "Trailing Effect"},
          {"恢复设置", "Restore Settings"}}},
    };
    return modes;
}

class ScreenRows : public ScreenFixture,
                   public testing::WithParamInterface<std::tuple<std::size_t, bool, int>> {
  protected:
    [[nodiscard]] QString shownText(QQuickItem* itsRow) const {
        QQuickItem* slider = find("sliderName", itsRow);
        return (slider ? slider : find("rowText", itsRow))->property("text").toString();
    }
    void expectWhole(QQuickItem* itsRow) const {
        QQuickItem* slider = find("sliderName", itsRow);
        QQuickItem* text = slider ? slider : find("rowText", itsRow);
        EXPECT_FALSE(text->property("truncated").toBool()) << shownText(itsRow).toStdString();
        EXPECT_LE(text->property("contentWidth").toDouble(), text->width());
    }
};

TEST_P(ScreenRows, ShowTheirTextsWhole) {
    const auto [index, inEnglish, width] = GetParam();
    const Mode& mode = modes()[index];
    open({.width = width, .mode = mode.mode, .english = inEnglish, .emojiBorder = mode.border});
    const auto expected = [english = inEnglish](const char* zh, const char* en) {
        return QString::fromUtf8(english ? en : zh);
    };
    const QList<QQuickItem*> headers = findAll("sectionHeader");
    ASSERT_EQ(headers.size(), 3);
    EXPECT_EQ(headers[0]->property("text"), expected("启动设置", "Launch Settings"));
    EXPECT_EQ(headers[1]->property("text"), expected("触摸设置", "Touch Settings"));
    EXPECT_EQ(headers[2]->property("text"), expected("显示设置", "Display Settings"));
    EXPECT_EQ(shownText(row(0, 0)), expected("开启 Skavlo", "Enable Skavlo"));
    EXPECT_EQ(shownText(row(1, 0)), expected("仅录屏显示", "Show in Record Only"));
    EXPECT_EQ(shownText(row(1, 1)), expected("多指显示", "Multi-Touch"));
    EXPECT_EQ(shownText(row(1, 2)), expected("单指显示", "Single-Touch"));
    const int rows = static_cast<int>(mode.rows.size());
    for (int i = 0; i < rows; ++i) {
        QQuickItem* itsRow = row(2, i);
        ASSERT_TRUE(itsRow) << i;
        const auto& [zh, en] = mode.rows[static_cast<std::size_t>(i)];
        EXPECT_EQ(shownText(itsRow), expected(zh, en));
        expectWhole(itsRow);
        reveal(itsRow);
        EXPECT_TRUE(QRectF(0, 44, width, window->height() - 44)
                        .contains(frameIn(itsRow, window->contentItem())))
            << i;
    }
    EXPECT_FALSE(row(2, rows));
    EXPECT_EQ(findAll("checkmark").size(), 1);
    EXPECT_TRUE(inRow(2, mode.mode, "checkmark"));
}

std::string nameOf(const std::tuple<std::size_t, bool, int>& rows) {
    const auto [index, inEnglish, width] = rows;
    return std::string(modes()[index].name) + (inEnglish ? "English" : "Chinese") +
           std::to_string(width);
}

INSTANTIATE_TEST_SUITE_P(ModesLanguagesWidths, ScreenRows,
                         testing::Combine(testing::Range<std::size_t>(0, 4), testing::Bool(),
                                          testing::Values(320, 390)),
                         [](const auto& suite) { return nameOf(suite.param); });

using ScreenSelection = ScreenFixture;

TEST_F(ScreenSelection, TappedModeReloadsItsSectionWithACrossFade) {
    open();
    QQuickItem* target = row(2, 1);
    reveal(target);
    click(target);
    EXPECT_EQ(intValue(lookUp(settings(), "displayMode")), 1);
    EXPECT_EQ(count(kWrite), 1);
    const auto fading = [this] {
        QQuickItem* rows = findAll("rows").value(2);
        return rows ? rows->opacity() : -1;
    };
    EXPECT_EQ(fading(), 0);
    step(150);
    EXPECT_NEAR(fading(), 0.5, 0.02);
    step(160);
    EXPECT_EQ(fading(), 1);
    EXPECT_EQ(screen->sections()[2]->rowCount({}), 1);  // the old rows are gone
    EXPECT_TRUE(inRow(2, 1, "checkmark"));
    EXPECT_EQ(screen->sections()[2]->currentRowCount(), 10);
}

TEST_F(ScreenSelection, TappedRowFlashesAndFades) {
    open();
    QQuickItem* target = row(2, 0);  // the mode in force: nothing but the flash
    reveal(target);
    QTest::mousePress(window.get(), Qt::LeftButton, {}, middle(target));
    EXPECT_EQ(find("highlight", target)->opacity(), 1);
    QTest::mouseRelease(window.get(), Qt::LeftButton, {}, middle(target));
    settle();
    EXPECT_EQ(find("highlight", target)->opacity(), 1);
    step(175);
    EXPECT_NEAR(find("highlight", target)->opacity(), 0.5, 0.02);
    step(180);
    EXPECT_EQ(find("highlight", target)->opacity(), 0);
    EXPECT_EQ(count(kWrite), 0);
}

TEST_F(ScreenSelection, RowsOfSwitchesDoNotFlash) {
    open();
    QTest::mousePress(window.get(), Qt::LeftButton, {}, middle(row(1, 0)) - QPoint(60, 0));
    EXPECT_EQ(find("highlight", row(1, 0))->opacity(), 0);
    QTest::mouseRelease(window.get(), Qt::LeftButton, {}, middle(row(1, 0)) - QPoint(60, 0));
}

TEST_F(ScreenSelection, LanguageButtonTurnsEveryTextAtOnce) {
    open();
    EXPECT_EQ(find("languageButton")->property("text"), QString("EN / 中"));
    click(find("languageButton"));
    EXPECT_EQ(find("languageButton")->property("text"), QString("中 / EN"));
    EXPECT_EQ(find("rowText", row(0, 0))->property("text"), QString("开启 Skavlo"));
    EXPECT_TRUE(screen->aboutText().startsWith("版本: 2.5\n作者: The Author\n"));
    EXPECT_EQ(screen->texts().done, QString("完成"));
    click(find("languageButton"));
    EXPECT_EQ(find("rowText", row(0, 0))->property("text"), QString("Enable Skavlo"));
    EXPECT_EQ(screen->texts().done, QString("Done"));
}

TEST_F(ScreenSelection, OnlyTheLinkInTheAboutTextOpens) {
    open();
    QQuickItem* about = find("about");
    const QPoint origin = about->mapToScene(QPointF()).toPoint();
    const int thirdLine = static_cast<int>(find("aboutLink")->y()) + 8;
    QTest::mouseClick(window.get(), Qt::LeftButton, {}, origin + QPoint(20, 8));
    QTest::mouseClick(window.get(), Qt::LeftButton, {}, origin + QPoint(10, thirdLine));
    EXPECT_TRUE(openedLinks.empty());
    QTest::mouseClick(window.get(), Qt::LeftButton, {}, origin + QPoint(100, thirdLine));
    ASSERT_EQ(openedLinks.size(), 1U);
    EXPECT_EQ(openedLinks[0], QString("https://channel.example"));
}

TEST_F(ScreenSelection, TheLinkIsReachedWithTabAndOpenedWithTheKeyboard) {
    open();
    QQuickItem* link = find("aboutLink");
    QStringList reached;
    for (int tab = 0; tab < 3; ++tab) {
        key(Qt::Key_Tab);
        reached.append(window->activeFocusItem()->objectName());
    }
    EXPECT_EQ(reached.join(' '), QString("languageButton infoButton aboutLink"));
    ASSERT_EQ(window->activeFocusItem(), link);
    EXPECT_TRUE(link->childItems().first()->property("shown").toBool()) << "the ring around it";
    for (const Qt::Key opens : {Qt::Key_Return, Qt::Key_Space, Qt::Key_Enter}) key(opens);
    EXPECT_EQ(openedLinks, std::vector<QString>(3, "https://channel.example"));
    EXPECT_EQ(window->activeFocusItem(), link);
    for (const Qt::Key other : {Qt::Key_Escape, Qt::Key_A}) key(other);
    EXPECT_EQ(openedLinks.size(), 3U);
}

TEST_F(ScreenSelection, RowsAreChosenWithTheKeyboard) {
    open();
    for (int tab = 0; tab < 8; ++tab) key(Qt::Key_Tab);  // header 3, switches 4, first row
    EXPECT_EQ(window->activeFocusItem(), row(2, 0));
    EXPECT_TRUE(screen->keyboardNavigation());
    key(Qt::Key_Tab);
    key(Qt::Key_Return);
    EXPECT_EQ(intValue(lookUp(settings(), "displayMode")), 1);
    EXPECT_EQ(window->activeFocusItem(), row(2, 1));  // the new row has what the old one had
}

// Everything that takes the keyboard, once, from top to bottom, and back again.
TEST_F(ScreenSelection, TabGoesThroughAllControlsInTheirOrder) {
    open({.mode = 2, .emojiBorder = true});
    QList<QQuickItem*> controls;
    const std::function<void(QQuickItem*)> collect = [&](QQuickItem* item) {
        if (!item->isVisible() || !item->isEnabled()) return;
        if (item->activeFocusOnTab()) controls.append(item);
        for (QQuickItem* child : item->childItems()) collect(child);
    };
    collect(find("content"));
    // Header 3, switches 6, choices of the mode 3, emoji field and button, sliders 7, wells 2,
    // restore.
    ASSERT_EQ(controls.size(), 24);
    QList<QQuickItem*> reached;
    double lowest = -1;
    for (qsizetype i = 0; i < controls.size(); ++i) {
        key(Qt::Key_Tab);
        QQuickItem* item = window->activeFocusItem();
        ASSERT_TRUE(item);
        EXPECT_FALSE(reached.contains(item)) << item->objectName().toStdString();
        reached.append(item);
        // Those of one row may differ in height by less than half of it.
        const double y = frameIn(item, find("column")).center().y();
        EXPECT_GT(y, lowest - 22) << item->objectName().toStdString();
        lowest = std::max(lowest, y);
    }
    for (QQuickItem* control : controls) {
        EXPECT_TRUE(reached.contains(control)) << control->objectName().toStdString();
    }
    key(Qt::Key_Tab);
    EXPECT_EQ(window->activeFocusItem(), reached.first()) << "and begins anew";
    for (qsizetype i = reached.size() - 1; i >= 0; --i) {
        key(Qt::Key_Backtab, Qt::ShiftModifier);
        EXPECT_EQ(window->activeFocusItem(), reached[i]) << i;
    }
}

TEST_F(ScreenSelection, TabKeepsTheFocusInSight) {
    open({.height = 500});
    for (int tab = 0; tab < 19; ++tab) {
        key(Qt::Key_Tab);
        QQuickItem* item = window->activeFocusItem();
        ASSERT_TRUE(item);
        const QRectF there = frameIn(item, window->contentItem());
        EXPECT_GE(there.top(), 43) << tab << " " << item->objectName().toStdString();
        EXPECT_LE(there.bottom(), 500) << tab << " " << item->objectName().toStdString();
    }
}

TEST_F(ScreenSelection, WheelScrollsTheTableAlsoAboveASlider) {
    open({.height = 500});
    QQuickItem* slider = inRow(2, 5, "slider");
    reveal(slider);
    const double before = find("table")->property("contentY").toDouble();
    const float value = floatValue(lookUp(settings(), "colorAlpha"));
    const QPointF at = middle(slider);
    QWheelEvent wheel(at, at, QPoint(0, -60), QPoint(0, -120), Qt::NoButton, Qt::NoModifier,
                      Qt::NoScrollPhase, false);
    QCoreApplication::sendEvent(window.get(), &wheel);
    for (int i = 0; i < 20; ++i) step(16);
    EXPECT_GT(find("table")->property("contentY").toDouble(), before);
    EXPECT_EQ(floatValue(lookUp(settings(), "colorAlpha")), value);
}

}  // namespace
}  // namespace skavlo
