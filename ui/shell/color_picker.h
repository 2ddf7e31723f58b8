#pragma once

#include <QtQml/qqmlregistration.h>
#include <QColor>
#include <QObject>
#include <QPointer>

#include "ui/shell/controls.h"

namespace skavlo {

// The colour sheet of one well. Every change goes to the well at once. Hue and saturation are
// remembered where the colour itself has none: in grey and in black.
class ColorPicker : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("made by the screen")
    Q_PROPERTY(QString title READ title CONSTANT)
    Q_PROPERTY(QColor color READ color NOTIFY changed)
    Q_PROPERTY(QColor pureHue READ pureHue NOTIFY changed)
    Q_PROPERTY(QColor opaque READ opaque NOTIFY changed)
    // 0 to 1, as is everything below.
    Q_PROPERTY(double hue READ hue WRITE setHue NOTIFY changed)
    Q_PROPERTY(double saturation READ saturation NOTIFY changed)
    Q_PROPERTY(double brightness READ brightness NOTIFY changed)
    Q_PROPERTY(double red READ red WRITE setRed NOTIFY changed)
    Q_PROPERTY(double green READ green WRITE setGreen NOTIFY changed)
    Q_PROPERTY(double blue READ blue WRITE setBlue NOTIFY changed)
    Q_PROPERTY(double alpha READ alpha WRITE setAlpha NOTIFY changed)
    Q_PROPERTY(QString hex READ hex NOTIFY changed)

  public:
    ColorPicker(ColorWellControl& well, QObject* parent);

    [[nodiscard]] const QString& title() const { return title_; }
    [[nodiscard]] QColor color() const;
    [[nodiscard]] QColor pureHue() const;
    [[nodiscard]] QColor opaque() const;
    [[nodiscard]] double hue() const { return hue_; }
    [[nodiscard]] double saturation() const { return saturation_; }
    [[nodiscard]] double brightness() const { return brightness_; }
    [[nodiscard]] double red() const { return color_.red; }
    [[nodiscard]] double green() const { return color_.green; }
    [[nodiscard]] double blue() const { return color_.blue; }
    [[nodiscard]] double alpha() const { return color_.alpha; }
    [[nodiscard]] QString hex() const;

    void setHue(double hue);
    Q_INVOKABLE void setSpectrum(double saturation, double brightness);
    void setRed(double red);
    void setGreen(double green);
    void setBlue(double blue);
    void setAlpha(double alpha);
    // False, and nothing changes, when the text is no colour.
    Q_INVOKABLE bool setHex(const QString& text);

  signals:
    void changed();

  private:
    void choose(const Colour& color);
    void chooseHsv();
    void rememberHsv();

    QPointer<ColorWellControl> well_;
    QString title_;
    Colour color_;
    double hue_ = 0;
    double saturation_ = 0;
    double brightness_ = 0;
};

}  // namespace skavlo
