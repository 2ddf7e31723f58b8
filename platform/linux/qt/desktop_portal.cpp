#include "platform/linux/qt/desktop_portal.h"

#include <QDBusArgument>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusMetaType>
#include <QDBusObjectPath>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QDesktopServices>
#include <QStringList>
#include <QTimer>
#include <QUrl>
#include <utility>

namespace skavlo {

// One way to recognise a file, and a named list of them: (us) and (sa(us)).
struct FilterPattern {
    uint kind;  // 0: of the name, 1: of the MIME type
    QString pattern;
};

struct FileFilter {
    QString name;
    QList<FilterPattern> patterns;
};

QDBusArgument& operator<<(QDBusArgument& argument, const FilterPattern& pattern) {
    argument.beginStructure();
    argument << pattern.kind << pattern.pattern;
    argument.endStructure();
    return argument;
}

const QDBusArgument& operator>>(const QDBusArgument& argument, FilterPattern& pattern) {
    argument.beginStructure();
    argument >> pattern.kind >> pattern.pattern;
    argument.endStructure();
    return argument;
}

QDBusArgument& operator<<(QDBusArgument& argument, const FileFilter& filter) {
    argument.beginStructure();
    argument << filter.name << filter.patterns;
    argument.endStructure();
    return argument;
}

const QDBusArgument& operator>>(const QDBusArgument& argument, FileFilter& filter) {
    argument.beginStructure();
    argument >> filter.name >> filter.patterns;
    argument.endStructure();
    return argument;
}

}  // namespace skavlo

Q_DECLARE_METATYPE(skavlo::FilterPattern)
Q_DECLARE_METATYPE(skavlo::FileFilter)

namespace skavlo {
namespace {

// A desktop that has not even said that it will ask by then does not.
constexpr int kPatienceMilliseconds = 3000;
constexpr auto kPortal = "org.freedesktop.portal.Desktop";
constexpr auto kRequestInterface = "org.freedesktop.portal.Request";

QDBusMessage portalCall(const char* interface, const char* method) {
    return QDBusMessage::createMethodCall(QLatin1String(kPortal),
                                          QStringLiteral("/org/freedesktop/portal/desktop"),
                                          QLatin1String(interface), QLatin1String(method));
}

void registerFilterTypes() {
    qDBusRegisterMetaType<FilterPattern>();
    qDBusRegisterMetaType<QList<FilterPattern>>();
    qDBusRegisterMetaType<FileFilter>();
    qDBusRegisterMetaType<QList<FileFilter>>();
}

QString newToken() {
    static unsigned count = 0;
    return QStringLiteral("skavlo%1").arg(++count);
}

// Where the answer to the request with this token will be told of.
QString requestPath(const QString& token) {
    QString sender = QDBusConnection::sessionBus().baseService().mid(1);
    sender.replace(u'.', u'_');
    return QStringLiteral("/org/freedesktop/portal/desktop/request/%1/%2").arg(sender, token);
}

}  // namespace

ImageFileRequest::ImageFileRequest(Answer answer) : answer_(std::move(answer)) {}

void ImageFileRequest::start(const QString& parentWindow, const QString& title,
                             const QString& filterName, Answer answer) {
    (new ImageFileRequest(std::move(answer)))->send(parentWindow, title, filterName);
}

void ImageFileRequest::send(const QString& parentWindow, const QString& title,
                            const QString& filterName) {
    registerFilterTypes();
    const QString token = newToken();
    // Before the call: the answer may come before the call has returned.
    if (!QDBusConnection::sessionBus().isConnected() || !listenAt(requestPath(token))) {
        return finish(std::nullopt);
    }
    const FileFilter images{filterName, {{1, QStringLiteral("image/*")}}};
    QDBusMessage call = portalCall("org.freedesktop.portal.FileChooser", "OpenFile");
    call << parentWindow << title
         << QVariantMap{{QStringLiteral("handle_token"), token},
                        {QStringLiteral("multiple"), false},
                        {QStringLiteral("filters"), QVariant::fromValue(QList{images})}};
    auto* watcher =
        new QDBusPendingCallWatcher(QDBusConnection::sessionBus().asyncCall(call), this);
    connect(watcher, &QDBusPendingCallWatcher::finished, this, [this, watcher] {
        const QDBusPendingReply<QDBusObjectPath> reply = *watcher;
        if (reply.isError()) return finish(std::nullopt);
        if (!answer_) return close(reply.value().path());
        // Portals of old choose a path of their own.
        if (reply.value().path() != path_) listenAt(reply.value().path());
        asks_ = true;
    });
    QTimer::singleShot(kPatienceMilliseconds, this, [this] {
        if (!asks_) answerWith(std::nullopt);
    });
}

void ImageFileRequest::close(const QString& path) {
    QDBusConnection::sessionBus().send(QDBusMessage::createMethodCall(
        QLatin1String(kPortal), path, QLatin1String(kRequestInterface), QStringLiteral("Close")));
    deleteLater();
}

bool ImageFileRequest::listenAt(const QString& path) {
    path_ = path;
    return QDBusConnection::sessionBus().connect(QString(), path, QLatin1String(kRequestInterface),
                                                 QStringLiteral("Response"), this,
                                                 SLOT(response(uint, QVariantMap)));
}

void ImageFileRequest::response(uint status, const QVariantMap& results) {
    constexpr uint kChosen = 0;
    const QStringList uris = results.value(QStringLiteral("uris")).toStringList();
    if (status != kChosen || uris.isEmpty()) return finish(QString());
    finish(QUrl(uris.first()).toLocalFile());
}

void ImageFileRequest::finish(const std::optional<QString>& path) {
    answerWith(path);
    deleteLater();
}

void ImageFileRequest::answerWith(const std::optional<QString>& path) {
    if (const Answer answer = std::exchange(answer_, nullptr)) answer(path);
}

void openLink(const QString& parentWindow, const QString& address) {
    QDBusMessage call = portalCall("org.freedesktop.portal.OpenURI", "OpenURI");
    call << parentWindow << address << QVariantMap();
    auto* watcher = new QDBusPendingCallWatcher(
        QDBusConnection::sessionBus().asyncCall(call, kPatienceMilliseconds));
    QObject::connect(watcher, &QDBusPendingCallWatcher::finished, watcher, [watcher, address] {
        if (watcher->isError()) QDesktopServices::openUrl(QUrl(address));
        watcher->deleteLater();
    });
}

}  // namespace skavlo
