// A session bus of our own with a desktop portal that answers as it is told to.
#pragma once

#include <QDBusAbstractAdaptor>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusObjectPath>
#include <QDBusVariant>
#include <QObject>
#include <QProcess>
#include <QVariantMap>

namespace skavlo {

// Runs for the whole program: Qt connects to its session bus once.
class PrivateBus {
  public:
    // False: there is no bus daemon on this machine.
    bool start();
    ~PrivateBus();

  private:
    QProcess daemon_;
};

class FakeRequest : public QDBusAbstractAdaptor {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.portal.Request")

  public:
    explicit FakeRequest(QObject* parent) : QDBusAbstractAdaptor(parent) {}
    bool closed = false;

  public slots:
    void Close() { closed = true; }
};

class FakeChooser : public QDBusAbstractAdaptor {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.portal.FileChooser")

  public:
    explicit FakeChooser(QObject* parent) : QDBusAbstractAdaptor(parent) {}
    uint status = 0;
    QStringList uris;
    bool slow = false;  // begins to ask when it is told to
    QString title;
    QVariantMap options;

    void beginToAsk();
    [[nodiscard]] bool isClosed() const { return request_->closed; }

  public slots:
    QDBusObjectPath OpenFile(const QString& parent, const QString& itsTitle,
                             const QVariantMap& itsOptions, const QDBusMessage& call);

  private:
    QObject requestObject_;
    FakeRequest* request_ = new FakeRequest(&requestObject_);
    QDBusMessage waiting_;
};

// Read wraps its answer twice, as the real one does.
class FakeSettings : public QDBusAbstractAdaptor {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.portal.Settings")

  public:
    explicit FakeSettings(QObject* parent) : QDBusAbstractAdaptor(parent) {}
    uint scheme = 0;
    void change(uint newScheme);

  public slots:
    QDBusVariant Read(const QString& space, const QString& key);

  signals:
    void SettingChanged(const QString& space, const QString& key, const QDBusVariant& value);
};

class FakeLinkOpener : public QDBusAbstractAdaptor {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.portal.OpenURI")

  public:
    explicit FakeLinkOpener(QObject* parent) : QDBusAbstractAdaptor(parent) {}
    QStringList opened;

  public slots:
    QDBusObjectPath OpenURI(const QString& parent, const QString& uri, const QVariantMap& options);
};

class FakePortal {
  public:
    FakePortal();
    ~FakePortal();

    QObject object;
    FakeChooser* chooser = new FakeChooser(&object);
    FakeSettings* settings = new FakeSettings(&object);
    FakeLinkOpener* links = new FakeLinkOpener(&object);
};

}  // namespace skavlo
