#pragma once

#include <QtQml/qqmlregistration.h>
#include <QObject>
#include <QString>
#include <functional>
#include <memory>

#include "ui/shell/controls.h"
#include "ui/table_view_cell.h"

namespace skavlo {

// A row of the table as QML sees it.
class Cell : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("made by the screen")
    Q_PROPERTY(QString text READ text CONSTANT)
    Q_PROPERTY(skavlo::Cell::TextColor textColor READ textColor CONSTANT)
    Q_PROPERTY(bool centered READ isCentered CONSTANT)
    // Whether a tap lets the row flash.
    Q_PROPERTY(bool selectable READ isSelectable CONSTANT)
    Q_PROPERTY(bool checkmark READ hasCheckmark CONSTANT)
    Q_PROPERTY(skavlo::SwitchControl* switchControl MEMBER switchControl_ CONSTANT)
    Q_PROPERTY(skavlo::SliderControl* slider MEMBER slider_ CONSTANT)
    Q_PROPERTY(skavlo::ColorWellControl* well MEMBER well_ CONSTANT)
    Q_PROPERTY(skavlo::EmojiFieldControl* emojiField MEMBER emojiField_ CONSTANT)
    // Path of an image file, or empty.
    Q_PROPERTY(QString thumbnail READ thumbnail CONSTANT)
    Q_PROPERTY(bool highlighted READ isHighlighted NOTIFY highlightedChanged)

  public:
    enum class TextColor { Label, SystemRed, SystemBlue };  // QML wants capitals
    Q_ENUM(TextColor)
    using Selection = std::function<void()>;

    Cell(std::unique_ptr<TableViewCell> cell, Selection didSelect, QObject* parent);

    [[nodiscard]] QString text() const;
    [[nodiscard]] TextColor textColor() const { return static_cast<TextColor>(cell_->textColor); }
    [[nodiscard]] bool isCentered() const;
    [[nodiscard]] bool isSelectable() const;
    [[nodiscard]] bool hasCheckmark() const;
    [[nodiscard]] QString thumbnail() const;
    [[nodiscard]] bool isHighlighted() const { return highlighted_; }
    [[nodiscard]] EmojiFieldControl* emojiField() const { return emojiField_; }
    // What moves in the row that this one replaces moves on here.
    void goOnFrom(const Cell& previous);

    Q_INVOKABLE void press();
    Q_INVOKABLE void cancelPress() { deselect(false); }
    Q_INVOKABLE void select();
    void deselect(bool animated);

  signals:
    void highlightedChanged(bool animated);

  private:
    void makeControl();

    std::unique_ptr<TableViewCell> cell_;
    Selection didSelect_;
    bool highlighted_ = false;
    SwitchControl* switchControl_ = nullptr;
    SliderControl* slider_ = nullptr;
    ColorWellControl* well_ = nullptr;
    EmojiFieldControl* emojiField_ = nullptr;
};

}  // namespace skavlo
