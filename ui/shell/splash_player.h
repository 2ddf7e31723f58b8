#pragma once

#include <QtQml/qqmlregistration.h>
#include <QObject>

#include "ui/splash.h"

namespace skavlo {

// The splash at a time that QML's animation sets, in seconds since launch.
class SplashPlayer : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("made by the screen")
    Q_PROPERTY(double time READ time WRITE setTime NOTIFY changed)
    Q_PROPERTY(double seconds READ seconds CONSTANT)
    Q_PROPERTY(double iconScale READ iconScale NOTIFY changed)
    Q_PROPERTY(double iconAlpha READ iconAlpha NOTIFY changed)
    Q_PROPERTY(double splashAlpha READ splashAlpha NOTIFY changed)
    Q_PROPERTY(double contentAlpha READ contentAlpha NOTIFY changed)
    Q_PROPERTY(bool removed READ isRemoved NOTIFY changed)

  public:
    explicit SplashPlayer(QObject* parent) : QObject(parent), frame_(splashFrame(0)) {}

    [[nodiscard]] double time() const { return time_; }
    [[nodiscard]] static double seconds() { return kSplashSeconds; }
    [[nodiscard]] double iconScale() const { return frame_.iconScale; }
    [[nodiscard]] double iconAlpha() const { return frame_.iconAlpha; }
    [[nodiscard]] double splashAlpha() const { return frame_.splashAlpha; }
    [[nodiscard]] double contentAlpha() const { return frame_.contentAlpha; }
    [[nodiscard]] bool isRemoved() const { return frame_.removed; }

    void setTime(double time) {
        time_ = time;
        frame_ = splashFrame(time);
        emit changed();
    }

  signals:
    void changed();

  private:
    double time_ = 0;
    SplashFrame frame_;
};

}  // namespace skavlo
