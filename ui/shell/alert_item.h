#pragma once

#include <QtQml/qqmlregistration.h>
#include <QObject>
#include <QStringList>
#include <utility>

#include "ui/alert.h"

namespace skavlo {

// A dialog as QML sees it.
class AlertItem : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("made by the screen")
    Q_PROPERTY(QString title READ title CONSTANT)
    Q_PROPERTY(QString message READ message CONSTANT)
    Q_PROPERTY(int actionCount READ actionCount CONSTANT)

  public:
    AlertItem(Alert alert, QObject* parent) : QObject(parent), alert_(std::move(alert)) {}

    [[nodiscard]] QString title() const { return QString::fromStdString(alert_.title); }
    [[nodiscard]] QString message() const { return QString::fromStdString(alert_.message); }
    [[nodiscard]] int actionCount() const { return static_cast<int>(alert_.actions.size()); }
    Q_INVOKABLE [[nodiscard]] QString actionTitle(int index) const;
    Q_INVOKABLE [[nodiscard]] bool isCancel(int index) const;
    Q_INVOKABLE [[nodiscard]] bool isDestructive(int index) const;
    // The one that Escape chooses.
    Q_INVOKABLE [[nodiscard]] int cancelIndex() const;
    // Only the first choice counts.
    Q_INVOKABLE void choose(int index);

  signals:
    void chosen();

  private:
    [[nodiscard]] bool hasStyle(int index, AlertActionStyle style) const;

    Alert alert_;
    bool answered_ = false;
};

}  // namespace skavlo
