// The desktop portal's file chooser and colour scheme.
#include <gtest/gtest.h>

#include <QDBusConnection>
#include <QDesktopServices>
#include <QtTest/QTest>
#include <memory>
#include <optional>

#include "platform/linux/qt/colour_scheme.h"
#include "platform/linux/qt/desktop_portal.h"
#include "tests/unit/desktop/fake_portal.h"

namespace skavlo {
namespace {

constexpr int kDeadlineMilliseconds = 10'000;

class DesktopPortal : public testing::Test {
  protected:
    void SetUp() override {
        if (!QDBusConnection::sessionBus().isConnected()) GTEST_SKIP() << "no dbus-daemon";
    }
    void ask() {
        ImageFileRequest::start({}, "Choose Image", "Images", [this](std::optional<QString> path) {
            ++answers;
            answer = std::move(path);
        });
    }
    [[nodiscard]] bool isAnswered() {
        return QTest::qWaitFor([this] { return answers > 0; }, kDeadlineMilliseconds);
    }

    int answers = 0;
    std::optional<QString> answer;
};

TEST_F(DesktopPortal, ChosenFileComesAsALocalPath) {
    FakePortal portal;
    portal.chooser->uris = QStringList{"file:///home/me/a%20cat.png"};
    ask();
    ASSERT_TRUE(isAnswered());
    EXPECT_EQ(answer, QString("/home/me/a cat.png"));
    EXPECT_EQ(portal.chooser->title, QString("Choose Image"));
    EXPECT_FALSE(portal.chooser->options.value("multiple").toBool());
    EXPECT_TRUE(portal.chooser->options.contains("filters"));
}

TEST_F(DesktopPortal, GivingUpIsAnEmptyPath) {
    FakePortal portal;
    portal.chooser->status = 1;
    ask();
    ASSERT_TRUE(isAnswered());
    EXPECT_EQ(answer, QString());
    EXPECT_TRUE(answer.has_value());
}

TEST_F(DesktopPortal, DesktopWithoutAPortalSaysSo) {
    ask();
    ASSERT_TRUE(isAnswered());
    EXPECT_FALSE(answer.has_value());
    EXPECT_EQ(answers, 1);
}

TEST_F(DesktopPortal, OneThatBeginsToAskTooLateIsToldThatNobodyWaits) {
    FakePortal portal;
    portal.chooser->slow = true;
    ask();
    ASSERT_TRUE(isAnswered());
    EXPECT_FALSE(answer.has_value());
    EXPECT_FALSE(portal.chooser->isClosed());
    portal.chooser->beginToAsk();
    EXPECT_TRUE(QTest::qWaitFor([&] { return portal.chooser->isClosed(); }, kDeadlineMilliseconds));
    EXPECT_EQ(answers, 1);
}

TEST_F(DesktopPortal, LinksAreOpenedByIt) {
    const FakePortal portal;
    openLink({}, "https://skavlo.example/a?b=c");
    EXPECT_TRUE(
        QTest::qWaitFor([&] { return !portal.links->opened.isEmpty(); }, kDeadlineMilliseconds));
    EXPECT_EQ(portal.links->opened, QStringList{"https://skavlo.example/a?b=c"});
}

// Stands for the programs that the desktop has for links.
class LinkHandler : public QObject {
    Q_OBJECT

  public:
    LinkHandler() { QDesktopServices::setUrlHandler("skavlo-test", this, "open"); }
    ~LinkHandler() override { QDesktopServices::unsetUrlHandler("skavlo-test"); }
    LinkHandler(const LinkHandler&) = delete;
    LinkHandler& operator=(const LinkHandler&) = delete;
    QList<QUrl> opened;

  public slots:
    void open(const QUrl& address) { opened.append(address); }
};

TEST_F(DesktopPortal, WithoutOneLinksAreOpenedByTheDesktopsPrograms) {
    const LinkHandler desktop;
    openLink({}, "skavlo-test://link");
    EXPECT_TRUE(QTest::qWaitFor([&] { return !desktop.opened.isEmpty(); }, kDeadlineMilliseconds));
    EXPECT_EQ(desktop.opened, QList{QUrl("skavlo-test://link")});
}

TEST_F(DesktopPortal, ColourSchemeIsReadAndFollowed) {
    FakePortal portal;
    portal.settings->scheme = 1;
    std::optional<bool> dark;
    const ColourScheme scheme([&dark](bool now) { dark = now; });
    EXPECT_EQ(dark, false);  // Qt's palette, until the portal has answered
    EXPECT_TRUE(QTest::qWaitFor([&] { return dark == true; }, kDeadlineMilliseconds));
    portal.settings->change(2);
    EXPECT_TRUE(QTest::qWaitFor([&] { return dark == false; }, kDeadlineMilliseconds));
    portal.settings->change(1);
    EXPECT_TRUE(QTest::qWaitFor([&] { return dark == true; }, kDeadlineMilliseconds));
}

}  // namespace
}  // namespace skavlo

#include "portal_test.moc"
