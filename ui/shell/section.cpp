#include "ui/shell/section.h"

#include <QPointer>
#include <QTimer>
#include <algorithm>

namespace skavlo {
namespace {

constexpr int kContentRole = Qt::UserRole;

}  // namespace

void SectionContent::retire(bool fades) {
    current_ = false;
    fades_ = fades;
    emit currentChanged();
}

void SectionContent::goOnFrom(const SectionContent& previous) {
    for (qsizetype row = 0; row < std::min(cells_.size(), previous.cells_.size()); ++row)
        cells_[row]->goOnFrom(*previous.cells_[row]);
}

int Section::currentRowCount() const {
    return contents_.isEmpty() ? 0 : static_cast<int>(contents_.last()->cells().size());
}

Cell* Section::cell(int row) const {
    return row < 0 || row >= currentRowCount() ? nullptr : contents_.last()->cells().at(row);
}

void Section::reload(const QString& title, bool fades,
                     const std::function<void(SectionContent& content)>& fill) {
    const QList<SectionContent*> previous = contents_;
    const int focusedRow = previous.isEmpty() ? -1 : previous.last()->focusedRow();
    auto* content = new SectionContent(fades && !previous.isEmpty(), focusedRow, this);
    fill(*content);
    if (!previous.isEmpty()) content->goOnFrom(*previous.last());
    for (SectionContent* old : previous) old->retire(fades);
    title_ = title;
    beginInsertRows({}, static_cast<int>(contents_.size()), static_cast<int>(contents_.size()));
    contents_.append(content);
    endInsertRows();
    emit reloaded();
    if (fades) return;
    for (SectionContent* old : previous) dismiss(old);
}

void Section::dismiss(SectionContent* content) {
    QTimer::singleShot(0, this, [this, gone = QPointer(content)] {
        if (gone) remove(gone);
    });
}

void Section::remove(SectionContent* content) {
    const auto row = static_cast<int>(contents_.indexOf(content));
    if (row < 0 || content->isCurrent()) return;
    beginRemoveRows({}, row, row);
    contents_.removeAt(row);
    endRemoveRows();
    content->deleteLater();  // the rows that show it are deleted later, too
}

int Section::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : static_cast<int>(contents_.size());
}

QVariant Section::data(const QModelIndex& index, int role) const {
    if (!index.isValid() || index.row() >= contents_.size() || role != kContentRole) return {};
    return QVariant::fromValue(contents_.at(index.row()));
}

QHash<int, QByteArray> Section::roleNames() const {
    return {{kContentRole, "content"}};
}

}  // namespace skavlo
