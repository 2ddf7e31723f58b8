#pragma once

#include <QtQml/qqmlregistration.h>
#include <QAbstractListModel>
#include <QList>
#include <functional>
#include <memory>

#include "ui/shell/cell.h"

namespace skavlo {

// The rows of a section between two reloads.
class SectionContent : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("made by the screen")
    Q_PROPERTY(QList<skavlo::Cell*> cells READ cells CONSTANT)
    // False once newer rows have taken its place.
    Q_PROPERTY(bool current READ isCurrent NOTIFY currentChanged)
    // Whether it comes, or goes, with a fade.
    Q_PROPERTY(bool fades READ fades NOTIFY currentChanged)
    // The row that had the keyboard before the reload, or -1.
    Q_PROPERTY(int focusedRow MEMBER focusedRow_ NOTIFY focusedRowChanged)

  public:
    SectionContent(bool fades, int focusedRow, QObject* parent)
        : QObject(parent), fades_(fades), focusedRow_(focusedRow) {}
    [[nodiscard]] const QList<Cell*>& cells() const { return cells_; }
    void add(Cell* cell) { cells_.append(cell); }
    [[nodiscard]] bool isCurrent() const { return current_; }
    [[nodiscard]] bool fades() const { return fades_; }
    [[nodiscard]] int focusedRow() const { return focusedRow_; }
    void retire(bool fades);
    void goOnFrom(const SectionContent& previous);

  signals:
    void currentChanged();
    void focusedRowChanged();

  private:
    QList<Cell*> cells_;
    bool current_ = true;
    bool fades_;
    int focusedRow_;
};

// A section of the table: a list of its contents, of which the last one counts; those before it are
// fading out.
class Section : public QAbstractListModel {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("made by the screen")
    Q_PROPERTY(QString title READ title NOTIFY reloaded)
    Q_PROPERTY(int rowCount READ currentRowCount NOTIFY reloaded)

  public:
    explicit Section(QObject* parent) : QAbstractListModel(parent) {}

    [[nodiscard]] const QString& title() const { return title_; }
    [[nodiscard]] int currentRowCount() const;
    // Null when there is no such row.
    [[nodiscard]] Cell* cell(int row) const;
    // Adds its cells to the content it is given.
    void reload(const QString& title, bool fades,
                const std::function<void(SectionContent& content)>& fill);
    // QML has faded the content out. It goes later: this may be its own animation's handler.
    Q_INVOKABLE void dismiss(skavlo::SectionContent* content);

    [[nodiscard]] int rowCount(const QModelIndex& parent) const override;
    [[nodiscard]] QVariant data(const QModelIndex& index, int role) const override;
    [[nodiscard]] QHash<int, QByteArray> roleNames() const override;

  signals:
    void reloaded();

  private:
    void remove(SectionContent* content);

    QString title_;
    QList<SectionContent*> contents_;
};

}  // namespace skavlo
