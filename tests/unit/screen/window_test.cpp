// The window's life.
#include <QScreen>
#include <algorithm>

#include "tests/unit/screen/screen_fixture.h"

namespace skavlo {
namespace {

using ScreenWindow = ScreenFixture;

TEST_F(ScreenWindow, TellsWhenItComesToTheForegroundAndLeaves) {
    int active = 0;
    int background = 0;
    const int self = 0;
    application.addObserver(&self, ApplicationEvent::didBecomeActive, [&] { ++active; });
    application.addObserver(&self, ApplicationEvent::didEnterBackground, [&] { ++background; });
    open();
    EXPECT_EQ(active, 1);
    EXPECT_EQ(background, 0);
    window->hide();
    settle();
    EXPECT_EQ(background, 1);
    window->show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(window.get()));
    EXPECT_EQ(active, 2);
    EXPECT_EQ(background, 1);
}

TEST_F(ScreenWindow, ClosingCommitsWhatIsBeingEdited) {
    open({.mode = 2});
    QQuickItem* field = inRow(2, 3, "emojiField");
    reveal(field);
    click(field);
    QInputMethodEvent event;
    event.setCommitString(QString::fromUtf8("🚀"));
    QCoreApplication::sendEvent(field, &event);
    window->close();
    settle();
    EXPECT_EQ(count(kWrite), 1);
    const PropertyDictionary now = stored();
    EXPECT_NE(lookUp(now, "emojiString")->as<std::string>()->find("🚀"), std::string::npos);
}

TEST_F(ScreenWindow, ImportShowsActivity) {
    open({.mode = 1});
    EXPECT_FALSE(find("importing")->isVisible());
    screen->setImporting(true);
    EXPECT_TRUE(find("importing")->isVisible());
    screen->setImporting(false);
    EXPECT_FALSE(find("importing")->isVisible());
}

TEST_F(ScreenWindow, HasTheApplicationsIcon) {
    open();
    EXPECT_TRUE(QTest::qWaitFor([&] { return !window->icon().availableSizes().isEmpty(); }));
}

TEST_F(ScreenWindow, IsNeverNarrowerThanThreeHundredAndTwenty) {
    open();
    EXPECT_EQ(window->minimumWidth(), 320);
}

TEST_F(ScreenWindow, IsOfAPhonesShapeAtFirstAndAsLargeAsOneWants) {
    open({.width = 0});  // as it comes
    const QSize first = defaultWindowSize(window->screen()->availableSize());
    EXPECT_EQ(window->size(), first);
    EXPECT_EQ(window->contentItem()->size(), QSizeF(first));
    EXPECT_GT(window->maximumWidth(), 10'000);
    EXPECT_GT(window->maximumHeight(), 10'000);
    EXPECT_FALSE(window->flags() & Qt::MSWindowsFixedSizeDialogHint);
}

TEST(DefaultWindowSize, IsAPhonesWhereThatFits) {
    EXPECT_EQ(defaultWindowSize({1920, 1080}), QSize(390, 844));
    EXPECT_EQ(defaultWindowSize({1366, 728}), QSize(390, 680));
    EXPECT_EQ(defaultWindowSize({360, 800}), QSize(360, 752));
    EXPECT_EQ(defaultWindowSize({240, 320}), QSize(320, 320));
}

TEST_F(ScreenWindow, FollowsItsSizeWhileItIsOpen) {
    open();
    const QSize sizes[] = {{320, 568}, {844, 390}, {320, 320}, {1920, 1080}, {390, 844}};
    for (const QSize size : sizes) {
        window->resize(size);
        settle();
        EXPECT_EQ(find("table")->size(), QSizeF(size));
        const double width = std::min(size.width(), 768);
        const QRectF header = frameIn(find("header"), window->contentItem());
        EXPECT_EQ(header.width(), width);
        EXPECT_NEAR(header.center().x(), size.width() / 2.0, 0.51);
        EXPECT_EQ(find("card")->width(), width - 2 * (width < 375 ? 16 : 20));
        for (int i = 0; i < 12; ++i) {
            reveal(row(2, i));
            const QRectF there = frameIn(row(2, i), window->contentItem());
            EXPECT_TRUE(QRectF(0, 44, size.width(), size.height() - 44).contains(there))
                << size.width() << " " << i;
        }
    }
}

TEST_F(ScreenWindow, FillsAScreen) {
    open();
    window->showFullScreen();
    ASSERT_TRUE(QTest::qWaitFor([&] { return window->size() == window->screen()->size(); }));
    settle();
    EXPECT_EQ(find("table")->size(), QSizeF(window->screen()->size()));
    click(inRow(1, 2, "switch"));
    EXPECT_TRUE(boolValue(lookUp(settings(), "singleFingerMode")));
}

}  // namespace
}  // namespace skavlo
