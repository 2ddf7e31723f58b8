// The window's life.
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

TEST_F(ScreenWindow, IsNeverNarrowerThanThreeHundredAndTwenty) {
    open();
    EXPECT_EQ(window->minimumWidth(), 320);
}

}  // namespace
}  // namespace skavlo
