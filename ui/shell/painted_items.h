// What plain QML cannot draw on the software back end, painted.
#pragma once

#include <QColor>
#include <QImage>
#include <QQuickPaintedItem>

#include "ui/shell/settings_screen.h"

namespace skavlo {

// Small signs in one colour, which fill the item's shorter side.
class Glyph : public QQuickPaintedItem {
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(skavlo::Glyph::Sign sign MEMBER sign_ NOTIFY changed)
    Q_PROPERTY(QColor color MEMBER color_ NOTIFY changed)

  public:
    // QML wants capitals. `Application` stands for the application's icon where that is missing.
    enum class Sign { Checkmark, Questionmark, Application, Smile, Folder, Picture, Up, Spokes };
    Q_ENUM(Sign)

    explicit Glyph(QQuickItem* parent = nullptr);
    void paint(QPainter* painter) override;

  signals:
    void changed();

  private:
    Sign sign_ = Sign::Checkmark;
    QColor color_ = Qt::black;
};

// An image file with round corners, or the application's sign when it cannot be loaded. With a
// screen, files of kinds that Qt does not know come a moment later.
class RoundedImage : public QQuickPaintedItem {
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(QString path READ path WRITE setPath NOTIFY changed)
    Q_PROPERTY(double cornerRadius MEMBER cornerRadius_ NOTIFY changed)
    // Fills the item and cuts off the rest, or fits into it whole.
    Q_PROPERTY(bool aspectFill MEMBER aspectFill_ NOTIFY changed)
    Q_PROPERTY(QColor tintColor MEMBER tintColor_ NOTIFY changed)
    Q_PROPERTY(bool loaded READ isLoaded NOTIFY changed)
    Q_PROPERTY(SettingsScreen* screen MEMBER screen_ NOTIFY changed)

  public:
    explicit RoundedImage(QQuickItem* parent = nullptr);
    [[nodiscard]] const QString& path() const { return path_; }
    void setPath(const QString& path);
    [[nodiscard]] bool isLoaded() const { return !image_.isNull(); }
    void paint(QPainter* painter) override;

  protected:
    void componentComplete() override;

  signals:
    void changed();

  private:
    [[nodiscard]] QRectF imageRect() const;
    void load();

    SettingsScreen* screen_ = nullptr;
    QString path_;
    double cornerRadius_ = 0;
    bool aspectFill_ = true;
    QColor tintColor_ = Qt::black;
    QImage image_;
};

// A colour within a ring of all hues; what is transparent lets a chequered ground through.
class WellFace : public QQuickPaintedItem {
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(QColor color MEMBER color_ NOTIFY changed)

  public:
    explicit WellFace(QQuickItem* parent = nullptr);
    void paint(QPainter* painter) override;

  signals:
    void changed();

  private:
    QColor color_ = Qt::white;
};

// The chequered ground alone, with round corners.
class Checkerboard : public QQuickPaintedItem {
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(double cornerRadius MEMBER cornerRadius_ NOTIFY changed)

  public:
    explicit Checkerboard(QQuickItem* parent = nullptr);
    void paint(QPainter* painter) override;

  signals:
    void changed();

  private:
    double cornerRadius_ = 0;
};

}  // namespace skavlo
