// The grid of emojis, worked without a pointer.
#include <QAccessible>

#include "tests/unit/screen/screen_fixture.h"

namespace skavlo {
namespace {

class ScreenEmojiSheet : public ScreenFixture {
  protected:
    static constexpr int kNarrowest = 320;

    // Opened as the keyboard does.
    void openSheet(int width = kNarrowest, int height = 844) {
        open({.width = width, .height = height, .mode = 2});
        button()->forceActiveFocus(Qt::TabFocusReason);
        key(Qt::Key_Space);
        step(300);
        ASSERT_TRUE(screen->emojiSheet());
        ASSERT_TRUE(grid()->hasActiveFocus());
    }
    [[nodiscard]] QQuickItem* button() const { return inRow(2, 3, "emojiButton"); }
    [[nodiscard]] QQuickItem* grid() const { return find("emojiGrid"); }
    [[nodiscard]] int columns() const {
        return static_cast<int>(grid()->width() / grid()->property("cellWidth").toDouble() + 0.5);
    }
    // That the keyboard stands on.
    [[nodiscard]] QString current() const {
        const QQuickItem* item = window->activeFocusItem();
        return item && item->objectName() == u"emoji" ? item->property("modelData").toString()
                                                      : QString();
    }
    [[nodiscard]] static QString emoji(qsizetype index) { return SettingsScreen::emojis()[index]; }
    void press(Qt::Key itsKey) {
        key(itsKey);
        step(300);  // the grid scrolls
    }
    [[nodiscard]] QString shown() const {
        return inRow(2, 3, "emojiField")->property("text").toString();
    }
    [[nodiscard]] QString storedEmoji() const {
        const PropertyDictionary now = stored();
        const PropertyValue* value = lookUp(now, "emojiString");
        const std::string* text = value ? value->as<std::string>() : nullptr;
        return text ? QString::fromStdString(*text) : QString();
    }
    void expectClosedWith(const QString& wanted) {
        EXPECT_FALSE(screen->emojiSheet());
        EXPECT_EQ(shown(), wanted);
        EXPECT_EQ(storedEmoji(), wanted);
        EXPECT_EQ(count(kWrite), 1);
        EXPECT_EQ(window->activeFocusItem(), button());
        step(300);
        EXPECT_FALSE(find("emojiSheet")->isVisible());
        EXPECT_EQ(window->activeFocusItem(), button());
    }
    [[nodiscard]] QQuickItem* delegate(const QString& wanted) const {
        for (QQuickItem* item : findAll("emoji", grid())) {
            if (item->property("modelData").toString() == wanted) return item;
        }
        return nullptr;
    }
    static QAccessibleInterface* of(QObject* item) {
        return QAccessible::queryAccessibleInterface(item);
    }
};

TEST_F(ScreenEmojiSheet, ArrowsMoveInAllDirections) {
    openSheet();
    const int across = columns();
    ASSERT_GE(across, 5);
    EXPECT_EQ(current(), emoji(0));
    press(Qt::Key_Right);
    EXPECT_EQ(current(), emoji(1));
    press(Qt::Key_Down);
    EXPECT_EQ(current(), emoji(across + 1));
    press(Qt::Key_Left);
    EXPECT_EQ(current(), emoji(across));
    press(Qt::Key_Up);
    EXPECT_EQ(current(), emoji(0));
    press(Qt::Key_Up);
    press(Qt::Key_Left);
    EXPECT_EQ(current(), emoji(0)) << "nothing lies before the first";
    EXPECT_EQ(count(kWrite), 0);
}

TEST_F(ScreenEmojiSheet, ReturnChoosesAndTheFocusGoesBack) {
    openSheet();
    for (const Qt::Key arrow : {Qt::Key_Down, Qt::Key_Right, Qt::Key_Right}) press(arrow);
    const QString wanted = emoji(columns() + 2);
    ASSERT_EQ(current(), wanted);
    key(Qt::Key_Return);
    expectClosedWith(wanted);
}

TEST_F(ScreenEmojiSheet, SpaceChoosesAndTheFocusGoesBack) {
    openSheet();
    press(Qt::Key_Right);
    key(Qt::Key_Space);
    expectClosedWith(emoji(1));
}

TEST_F(ScreenEmojiSheet, EscapeClosesAndChangesNothing) {
    openSheet();
    const QString before = shown();
    press(Qt::Key_Right);
    press(Qt::Key_Down);
    key(Qt::Key_Escape);
    EXPECT_FALSE(screen->emojiSheet());
    EXPECT_EQ(shown(), before);
    EXPECT_EQ(count(kWrite), 0);
    EXPECT_EQ(window->activeFocusItem(), button());
    step(300);
    EXPECT_FALSE(find("emojiSheet")->isVisible());
    key(Qt::Key_Return);
    EXPECT_TRUE(screen->emojiSheet()) << "the button that has the focus again opens it";
}

TEST_F(ScreenEmojiSheet, TabReachesTheCloseButtonAndComesBack) {
    openSheet();
    const QQuickItem* closes = find("closeButton", find("emojiSheet"));
    key(Qt::Key_Tab);
    EXPECT_EQ(window->activeFocusItem(), closes);
    key(Qt::Key_Tab);
    EXPECT_EQ(current(), emoji(0));
    key(Qt::Key_Backtab, Qt::ShiftModifier);
    ASSERT_EQ(window->activeFocusItem(), closes);
    key(Qt::Key_Space);
    EXPECT_FALSE(screen->emojiSheet());
    EXPECT_EQ(window->activeFocusItem(), button());
    EXPECT_EQ(count(kWrite), 0);
}

TEST_F(ScreenEmojiSheet, EveryOneIsReachedWithTheArrowsAndComesIntoSight) {
    openSheet(kNarrowest, kNarrowest);
    const QRectF sight(0, 0, grid()->width(), grid()->height());
    for (qsizetype i = 0; i < SettingsScreen::emojis().size(); ++i) {
        QQuickItem* item = window->activeFocusItem();
        ASSERT_EQ(current(), emoji(i));
        EXPECT_TRUE(sight.contains(frameIn(item, grid()))) << i;
        EXPECT_TRUE(of(item)->state().focused) << i;
        press(Qt::Key_Right);
    }
    EXPECT_GT(grid()->property("contentY").toDouble(), 0) << "all of it was in sight";
    key(Qt::Key_Return);
    expectClosedWith(SettingsScreen::emojis().last());
}

// In the lowest window the sheet shows but a few of them; all are there for a screen reader.
TEST_F(ScreenEmojiSheet, EveryOneIsAButtonForAScreenReader) {
    openSheet(kNarrowest, kNarrowest);
    EXPECT_EQ(of(grid())->role(), QAccessible::List);
    EXPECT_EQ(of(grid())->text(QAccessible::Name), QString("Choose Emoji"));
    for (const QString& wanted : SettingsScreen::emojis()) {
        QQuickItem* item = delegate(wanted);
        ASSERT_TRUE(item) << wanted.toStdString();
        QAccessibleInterface* spoken = of(item);
        EXPECT_EQ(spoken->role(), QAccessible::Button) << wanted.toStdString();
        EXPECT_EQ(spoken->text(QAccessible::Name), wanted);
        EXPECT_TRUE(spoken->state().focusable) << wanted.toStdString();
        EXPECT_TRUE(spoken->actionInterface()->actionNames().contains(
            QAccessibleActionInterface::pressAction()))
            << wanted.toStdString();
    }
}

TEST_F(ScreenEmojiSheet, PressActionChoosesAlsoWhatIsScrolledAway) {
    openSheet(kNarrowest, kNarrowest);
    const QString last = SettingsScreen::emojis().last();
    QQuickItem* item = delegate(last);
    ASSERT_TRUE(item);
    ASSERT_GT(frameIn(item, grid()).top(), grid()->height()) << "it is in sight";
    of(item)->actionInterface()->doAction(QAccessibleActionInterface::pressAction());
    settle();
    expectClosedWith(last);
}

TEST_F(ScreenEmojiSheet, PressActionChoosesWhatWasScrolledTo) {
    openSheet(kNarrowest, kNarrowest);
    grid()->setProperty("contentY",
                        grid()->property("contentHeight").toDouble() - grid()->height());
    settle();
    const QString wanted = emoji(SettingsScreen::emojis().size() - 2);
    QQuickItem* item = delegate(wanted);
    ASSERT_TRUE(item);
    EXPECT_LE(frameIn(item, grid()).bottom(), grid()->height());
    of(item)->actionInterface()->doAction(QAccessibleActionInterface::pressAction());
    settle();
    expectClosedWith(wanted);
}

}  // namespace
}  // namespace skavlo
