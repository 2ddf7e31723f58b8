#include "ui/shell/settings_window.h"

#include <QFontDatabase>
#include <QIcon>
#include <QKeyEvent>
#include <QScreen>
#include <utility>

// Made by CMake: a static module's types are unknown until this is called.
void qml_register_types_Skavlo();

namespace skavlo {
namespace {

constexpr QSize kPhone(390, 844);
constexpr QSize kMinimumSize(320, 320);
constexpr int kFrameHeight = 48;  // of a title bar, and some air

bool movesFocus(const QEvent& event) {
    if (event.type() != QEvent::KeyPress) return false;
    switch (static_cast<const QKeyEvent&>(event).key()) {
        case Qt::Key_Tab:
        case Qt::Key_Backtab:
        case Qt::Key_Up:
        case Qt::Key_Down:
        case Qt::Key_Left:
        case Qt::Key_Right:
            return true;
        default:
            return false;
    }
}

bool isPress(const QEvent& event) {
    return event.type() == QEvent::MouseButtonPress || event.type() == QEvent::TouchBegin;
}

}  // namespace

QStringList fontFamilies() {
    static const QStringList chinese = {
        QStringLiteral("Noto Sans CJK SC"),  QStringLiteral("Source Han Sans SC"),
        QStringLiteral("Noto Sans SC"),      QStringLiteral("WenQuanYi Micro Hei"),
        QStringLiteral("WenQuanYi Zen Hei"), QStringLiteral("Droid Sans Fallback")};
    const QStringList installed = QFontDatabase::families();
    QStringList families;
    for (const QString& family : chinese) {
        if (!families.isEmpty()) break;
        if (installed.contains(family)) families.append(family);
    }
    if (families.isEmpty()) families.append(QStringLiteral("sans-serif"));
    families.append(QStringLiteral("Noto Color Emoji"));
    return families;
}

QSize defaultWindowSize(QSize available) {
    return kPhone.boundedTo(available - QSize(0, kFrameHeight)).expandedTo(kMinimumSize);
}

SettingsWindow::SettingsWindow(SettingsScreen& screen, ApplicationNotifications& application)
    : screen_(screen), application_(application) {
    qml_register_types_Skavlo();
    setTitle(QStringLiteral("Skavlo"));
    setResizeMode(QQuickView::SizeRootObjectToView);
    setMinimumSize(kMinimumSize);
    const QScreen* display = QQuickView::screen();
    resize(display ? defaultWindowSize(display->availableSize()) : kPhone);
    setInitialProperties({{QStringLiteral("screen"), QVariant::fromValue(&screen)}});
    setSource(QUrl(QStringLiteral("qrc:/qt/qml/Skavlo/Main.qml")));
    // Behind the first frame, which need not wait for what window managers and docks show.
    connect(
        this, &QQuickWindow::frameSwapped, this, [this] { setIcon(QIcon(screen_.iconPath())); },
        static_cast<Qt::ConnectionType>(Qt::QueuedConnection | Qt::SingleShotConnection));
}

bool SettingsWindow::event(QEvent* event) {
    if (movesFocus(*event)) screen_.setKeyboardNavigation(true);
    if (isPress(*event)) screen_.setKeyboardNavigation(false);
    if (event->type() == QEvent::Close) screen_.endEditing();
    return QQuickView::event(event);
}

void SettingsWindow::exposeEvent(QExposeEvent* event) {
    QQuickView::exposeEvent(event);
    noteForeground(isExposed());
}

void SettingsWindow::hideEvent(QHideEvent* event) {
    QQuickView::hideEvent(event);
    noteForeground(false);
}

void SettingsWindow::noteForeground(bool inForeground) {
    if (std::exchange(inForeground_, inForeground) == inForeground) return;
    application_.post(inForeground ? ApplicationEvent::didBecomeActive
                                   : ApplicationEvent::didEnterBackground);
}

}  // namespace skavlo
