// What QML sees of the controls in a row. Each holds on to its control, so that a row that is still
// fading out can be touched without harm.
#pragma once

#include <QtQml/qqmlregistration.h>
#include <QObject>
#include <QString>
#include <QVariantAnimation>
#include <memory>

#include "ui/table_view_cell.h"

namespace skavlo {

class SwitchControl : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("made by the screen")
    Q_PROPERTY(bool on READ isOn NOTIFY changed)
    Q_PROPERTY(bool loading READ isLoading NOTIFY changed)
    // Where the thumb stands: 0 off, 1 on, between them while it glides.
    Q_PROPERTY(double position READ position NOTIFY moved)

  public:
    SwitchControl(std::shared_ptr<SKVFakeSwitch> itsSwitch, QObject* parent);
    // A reload has made this one of a switch that had another: a thumb that glides there glides on
    // here. Of another switch nothing is taken.
    void glideOnFrom(const SwitchControl& previous);
    [[nodiscard]] bool isOn() const { return switch_->isOn(); }
    [[nodiscard]] bool isLoading() const { return switch_->isLoading(); }
    [[nodiscard]] double position() const { return position_; }
    Q_INVOKABLE void tap();

  signals:
    void changed();
    void moved();

  private:
    void follow(bool animated);
    void moveTo(double position);

    std::shared_ptr<SKVFakeSwitch> switch_;
    double position_;
    QVariantAnimation glide_;
};

class SliderControl : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("made by the screen")
    Q_PROPERTY(QString name READ name CONSTANT)
    Q_PROPERTY(double minimumValue READ minimumValue CONSTANT)
    Q_PROPERTY(double maximumValue READ maximumValue CONSTANT)
    Q_PROPERTY(double value READ value NOTIFY changed)
    // Where the value stands in its range, 0 to 1.
    Q_PROPERTY(double fraction READ fraction NOTIFY changed)
    Q_PROPERTY(QString valueText READ valueText NOTIFY changed)

  public:
    SliderControl(std::shared_ptr<SliderRow> row, QObject* parent);
    [[nodiscard]] QString name() const { return QString::fromStdString(row_->name); }
    [[nodiscard]] double minimumValue() const { return row_->slider.minimumValue; }
    [[nodiscard]] double maximumValue() const { return row_->slider.maximumValue; }
    [[nodiscard]] double value() const { return row_->slider.value(); }
    [[nodiscard]] double fraction() const;
    [[nodiscard]] QString valueText() const {
        return QString::fromStdString(row_->valueLabel.text);
    }
    Q_INVOKABLE void drag(double fraction);
    Q_INVOKABLE void endDrag();
    Q_INVOKABLE void minus();
    Q_INVOKABLE void plus();

  signals:
    void changed(bool animated);

  private:
    std::shared_ptr<SliderRow> row_;
};

class ColorWellControl : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("made by the screen")
    Q_PROPERTY(QColor color READ color NOTIFY changed)
    // The colour in words of numbers, for those who hear it.
    Q_PROPERTY(QString hex READ hex NOTIFY changed)

  public:
    ColorWellControl(std::shared_ptr<ColorWell> well, QString title, QObject* parent);
    [[nodiscard]] QColor color() const;
    [[nodiscard]] QString hex() const;
    [[nodiscard]] const QString& title() const { return title_; }
    [[nodiscard]] const Colour& selectedColor() const { return well_->selectedColor; }
    // The user's choice, also at every step of a drag.
    void choose(const Colour& color);

  signals:
    void changed();

  private:
    std::shared_ptr<ColorWell> well_;
    QString title_;
};

class EmojiFieldControl : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("made by the screen")
    Q_PROPERTY(QString text READ text NOTIFY changed)
    Q_PROPERTY(bool editing READ isEditing NOTIFY editingChanged)

  public:
    EmojiFieldControl(std::shared_ptr<EmojiField> field, QObject* parent);
    [[nodiscard]] QString text() const { return QString::fromStdString(field_->text); }
    [[nodiscard]] bool isEditing() const { return editing_; }
    Q_INVOKABLE void begin();
    // What the field shows now, with what an input method has not committed yet.
    Q_INVOKABLE void edit(const QString& draft);
    // Return, or the focus moves on. Once for each editing.
    Q_INVOKABLE void end();
    // As if the text had been typed and Return pressed.
    void replace(const QString& text);
    // Where the user-perceived character before the position begins.
    Q_INVOKABLE static int characterBefore(const QString& text, int position);

  signals:
    void changed();
    void resigned();
    void editingChanged();

  private:
    std::shared_ptr<EmojiField> field_;
    QString draft_;
    bool editing_ = false;
};

}  // namespace skavlo
