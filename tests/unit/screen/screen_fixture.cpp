#include "tests/unit/screen/screen_fixture.h"

#include <algorithm>
#include <utility>

namespace skavlo {
namespace {

QStringList complaints;
QtMessageHandler previousHandler = nullptr;

void note(QtMsgType type, const QMessageLogContext& context, const QString& message) {
    if (message.startsWith(u"qrc:") || message.startsWith(u"file:")) complaints.append(message);
    previousHandler(type, context, message);
}

}  // namespace

void watchComplaints() {
    previousHandler = qInstallMessageHandler(note);
}

SteppedAnimations& SteppedAnimations::instance() {
    // Never destroyed: what it belongs to in Qt is gone before static objects are.
    static auto* const animations = new SteppedAnimations;
    return *animations;
}

void SteppedAnimations::start() {
    start_ = now_;
    QAnimationDriver::start();
}

void SteppedAnimations::step(int milliseconds) {
    QCoreApplication::sendPostedEvents();
    now_ += milliseconds;
    advance();
    QCoreApplication::sendPostedEvents();
}

ScreenFixture::~ScreenFixture() {
    window.reset();
    controller.reset();
    screen.reset();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
}

void ScreenFixture::TearDown() {
    window.reset();
    const QStringList seen = std::exchange(complaints, {});
    EXPECT_TRUE(seen.isEmpty()) << seen.join('\n').toStdString();
}

void ScreenFixture::open(const ScreenOptions& options) {
    PropertyDictionary initial = defaultSettings();
    initial["displayMode"] = options.mode;
    initial["isEnglish"] = options.english ? 1 : 0;
    initial["imagePath"] = options.imagePath;
    initial["emojiShowBorder"] = options.emojiBorder;
    files.files.writeAtomically(directory.settingsFile(), lists.serialize(initial));
    ScreenDesktop desktop{.pickImage = {},
                          .openLink = [this](const QString& link) { openedLinks.push_back(link); },
                          .decodeImage =
                              [this](const QString& path, std::function<void(QImage)> answer) {
                                  askedToDecode.emplace_back(path, std::move(answer));
                              },
                          .iconPath = options.iconPath};
    if (options.portal) {
        desktop.pickImage = [this](const QString&, const QString&,
                                   std::function<void(std::optional<QString>)> answer) {
            askedForImage.push_back(std::move(answer));
        };
    }
    screen = std::make_unique<SettingsScreen>(std::move(desktop));
    controller = std::make_unique<SettingsViewController>(system, *screen);
    screen->setController(controller.get());
    controller->viewDidLoad();
    screen->reloadData();
    screen->setDark(options.dark);
    window = std::make_unique<SettingsWindow>(*screen, application);
    if (options.width > 0) window->resize(options.width, options.height);
    window->show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(window.get()));
    window->requestActivate();
    ASSERT_TRUE(QTest::qWaitForWindowActive(window.get()));
    settle();
    if (!options.splash) step(1300);
    log.restart();
}

QList<QQuickItem*> ScreenFixture::findAll(const QString& name, QQuickItem* within) const {
    QList<QQuickItem*> found;
    QQuickItem* top = within ? within : window->contentItem();
    if (top->objectName() == name) found.append(top);
    for (QQuickItem* child : top->childItems()) {
        if (child->objectName() != u"oldRows") found.append(findAll(name, child));
    }
    return found;
}

QQuickItem* ScreenFixture::find(const QString& name, QQuickItem* within) const {
    return findAll(name, within).value(0);
}

QQuickItem* ScreenFixture::row(int section, int index) const {
    QQuickItem* view = findAll(QStringLiteral("section")).value(section);
    return view ? findAll(QStringLiteral("row"), view).value(index) : nullptr;
}

QQuickItem* ScreenFixture::inRow(int section, int index, const QString& name) const {
    QQuickItem* itsRow = row(section, index);
    return itsRow ? find(name, itsRow) : nullptr;
}

QRectF ScreenFixture::frame(const QQuickItem* item) {
    return {item->x(), item->y(), item->width(), item->height()};
}

QRectF ScreenFixture::frameIn(const QQuickItem* item, const QQuickItem* ancestor) const {
    return item->mapRectToItem(ancestor, QRectF(0, 0, item->width(), item->height()));
}

QPoint ScreenFixture::middle(const QQuickItem* item) const {
    return item->mapToScene(QPointF(item->width() / 2, item->height() / 2)).toPoint();
}

void ScreenFixture::reveal(const QQuickItem* item) {
    QQuickItem* table = find(QStringLiteral("table"));
    const double y = item->mapToItem(table, QPointF()).y();
    if (y > 60 && y + item->height() < table->height() - 10) return;
    const double offset = table->property("contentY").toDouble() + y - table->height() / 2;
    const double last = table->property("contentHeight").toDouble() - table->height();
    table->setProperty("contentY", std::clamp(offset, -44.0, std::max(-44.0, last)));
    settle();
}

void ScreenFixture::click(const QQuickItem* item) {
    QTest::mouseClick(window.get(), Qt::LeftButton, {}, middle(item));
    settle();
}

void ScreenFixture::key(Qt::Key key, Qt::KeyboardModifiers modifiers) {
    QTest::keyClick(window.get(), key, modifiers);
    settle();
}

void ScreenFixture::settle() const {
    QCoreApplication::processEvents();
    loop.runPosted();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    QCoreApplication::processEvents();
}

void ScreenFixture::step(int milliseconds) {
    SteppedAnimations::instance().step(milliseconds);
    settle();
}

PropertyDictionary ScreenFixture::stored() const {
    return lists.parse(files.files.read(directory.settingsFile()).value_or(""))
        .value_or(PropertyDictionary());
}

long ScreenFixture::count(const std::string& what) const {
    const auto whats = log.whats();
    return std::count(whats.begin(), whats.end(), what);
}

}  // namespace skavlo
