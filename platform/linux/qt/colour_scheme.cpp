#include "platform/linux/qt/colour_scheme.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QGuiApplication>
#include <QPalette>
#include <utility>

namespace skavlo {
namespace {

const QString kService = QStringLiteral("org.freedesktop.portal.Desktop");
const QString kPath = QStringLiteral("/org/freedesktop/portal/desktop");
const QString kInterface = QStringLiteral("org.freedesktop.portal.Settings");
const QString kSpace = QStringLiteral("org.freedesktop.appearance");
const QString kKey = QStringLiteral("color-scheme");

bool paletteIsDark() {
    const QPalette palette = QGuiApplication::palette();
    return palette.color(QPalette::WindowText).lightness() >
           palette.color(QPalette::Window).lightness();
}

}  // namespace

ColourScheme::ColourScheme(std::function<void(bool dark)> didChange)
    : didChange_(std::move(didChange)) {
    didChange_(paletteIsDark());
    QMetaType::fromType<QDBusVariant>().id();  // or the slot below is never called
    QDBusConnection bus = QDBusConnection::sessionBus();
    if (!bus.isConnected()) return;
    bus.connect(kService, kPath, kInterface, QStringLiteral("SettingChanged"), this,
                SLOT(settingChanged(QString, QString, QDBusVariant)));
    read();
}

void ColourScheme::read() {
    QDBusMessage call =
        QDBusMessage::createMethodCall(kService, kPath, kInterface, QStringLiteral("Read"));
    call << kSpace << kKey;
    auto* watcher =
        new QDBusPendingCallWatcher(QDBusConnection::sessionBus().asyncCall(call), this);
    connect(watcher, &QDBusPendingCallWatcher::finished, this, [this, watcher] {
        const QDBusPendingReply<QDBusVariant> reply = *watcher;
        if (!reply.isError()) apply(reply.value().variant());
        watcher->deleteLater();
    });
}

void ColourScheme::settingChanged(const QString& space, const QString& key,
                                  const QDBusVariant& value) {
    if (space == kSpace && key == kKey) apply(value.variant());
}

// What Read answers is wrapped once more than what SettingChanged tells.
void ColourScheme::apply(const QVariant& value) {
    constexpr uint kPreferDark = 1;
    constexpr uint kPreferLight = 2;
    const QVariant inner =
        value.canConvert<QDBusVariant>() ? qvariant_cast<QDBusVariant>(value).variant() : value;
    const uint preference = inner.toUInt();
    didChange_(preference == kPreferDark || (preference != kPreferLight && paletteIsDark()));
}

}  // namespace skavlo
