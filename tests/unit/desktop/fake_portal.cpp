#include "tests/unit/desktop/fake_portal.h"

namespace skavlo {
namespace {

const QString kObject = QStringLiteral("/org/freedesktop/portal/desktop");
const QString kService = QStringLiteral("org.freedesktop.portal.Desktop");
constexpr int kDeadlineMilliseconds = 10'000;

}  // namespace

bool PrivateBus::start() {
    daemon_.start(QStringLiteral("dbus-daemon"),
                  {QStringLiteral("--session"), QStringLiteral("--nofork"),
                   QStringLiteral("--print-address")});
    if (!daemon_.waitForReadyRead(kDeadlineMilliseconds)) return false;
    qputenv("DBUS_SESSION_BUS_ADDRESS", daemon_.readLine().trimmed());
    return true;
}

PrivateBus::~PrivateBus() {
    daemon_.terminate();
    daemon_.waitForFinished(kDeadlineMilliseconds);
}

QDBusObjectPath FakeChooser::OpenFile(const QString& /*parent*/, const QString& itsTitle,
                                      const QVariantMap& itsOptions, const QDBusMessage& call) {
    title = itsTitle;
    options = itsOptions;
    QString sender = call.service().mid(1);
    sender.replace(u'.', u'_');
    const QString path = kObject + QStringLiteral("/request/") + sender + u'/' +
                         options.value(QStringLiteral("handle_token")).toString();
    if (slow) {
        QDBusConnection(QStringLiteral("portal"))
            .registerObject(path, &requestObject_, QDBusConnection::ExportAdaptors);
        call.setDelayedReply(true);
        waiting_ = call.createReply(QVariant::fromValue(QDBusObjectPath(path)));
        return {};
    }
    QDBusMessage response = QDBusMessage::createSignal(
        path, QStringLiteral("org.freedesktop.portal.Request"), QStringLiteral("Response"));
    response << status << QVariantMap{{QStringLiteral("uris"), uris}};
    // Before the call returns, which a quick portal may do.
    QDBusConnection(QStringLiteral("portal")).send(response);
    return QDBusObjectPath(path);
}

void FakeChooser::beginToAsk() {
    QDBusConnection(QStringLiteral("portal")).send(waiting_);
}

QDBusVariant FakeSettings::Read(const QString& /*space*/, const QString& /*key*/) {
    return QDBusVariant(QVariant::fromValue(QDBusVariant(scheme)));
}

void FakeSettings::change(uint newScheme) {
    scheme = newScheme;
    emit SettingChanged(QStringLiteral("org.freedesktop.appearance"),
                        QStringLiteral("color-scheme"), QDBusVariant(newScheme));
}

QDBusObjectPath FakeLinkOpener::OpenURI(const QString& /*parent*/, const QString& uri,
                                        const QVariantMap& /*options*/) {
    opened.append(uri);
    return QDBusObjectPath(kObject + QStringLiteral("/request/link"));
}

FakePortal::FakePortal() {
    QDBusConnection bus =
        QDBusConnection::connectToBus(QDBusConnection::SessionBus, QStringLiteral("portal"));
    bus.registerObject(kObject, &object, QDBusConnection::ExportAdaptors);
    bus.registerService(kService);
}

FakePortal::~FakePortal() {
    QDBusConnection(QStringLiteral("portal")).unregisterService(kService);
    QDBusConnection::disconnectFromBus(QStringLiteral("portal"));
}

}  // namespace skavlo
