#pragma once

#include <QDBusVariant>
#include <QObject>
#include <functional>

namespace skavlo {

// Whether the desktop prefers dark colours, as its portal says; without one, whether Qt's palette
// is dark.
class ColourScheme : public QObject {
    Q_OBJECT

  public:
    // Calls back once at least, and whenever the answer may have changed.
    explicit ColourScheme(std::function<void(bool dark)> didChange);

  private slots:
    void settingChanged(const QString& space, const QString& key, const QDBusVariant& value);

  private:
    void read();
    void apply(const QVariant& value);

    std::function<void(bool dark)> didChange_;
};

}  // namespace skavlo
