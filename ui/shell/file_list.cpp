#include "ui/shell/file_list.h"

#include <QDir>

namespace skavlo {
namespace {

enum Role { kName = Qt::UserRole, kIsDirectory };

const QStringList& imagePatterns() {
    static const QStringList patterns = {
        QStringLiteral("*.png"),  QStringLiteral("*.jpg"),  QStringLiteral("*.jpeg"),
        QStringLiteral("*.gif"),  QStringLiteral("*.webp"), QStringLiteral("*.bmp"),
        QStringLiteral("*.tif"),  QStringLiteral("*.tiff"), QStringLiteral("*.svg"),
        QStringLiteral("*.avif"), QStringLiteral("*.heic"), QStringLiteral("*.heif"),
        QStringLiteral("*.ico")};
    return patterns;
}

constexpr QDir::SortFlags kByName = QDir::Name | QDir::IgnoreCase | QDir::LocaleAware;

}  // namespace

FileList::FileList(const QString& directory, QObject* parent) : QAbstractListModel(parent) {
    enter(directory);
}

void FileList::enter(const QString& directory) {
    const QDir dir(directory);
    beginResetModel();
    directory_ = dir.absolutePath();
    entries_.clear();
    if (!dir.isRoot()) {
        entries_.append({QStringLiteral(".."), QDir::cleanPath(dir.absoluteFilePath("..")), true});
    }
    for (const QString& name : dir.entryList(QDir::Dirs | QDir::NoDotAndDotDot, kByName)) {
        entries_.append({name, dir.absoluteFilePath(name), true});
    }
    for (const QString& name :
         dir.entryList(imagePatterns(), QDir::Files | QDir::Readable, kByName)) {
        entries_.append({name, dir.absoluteFilePath(name), false});
    }
    endResetModel();
    emit directoryChanged();
}

bool FileList::isEmpty() const {
    return entries_.isEmpty() || (entries_.size() == 1 && entries_[0].name == u"..");
}

void FileList::choose(int row) {
    if (row < 0 || row >= entries_.size()) return;
    const Entry entry = entries_[row];
    if (entry.isDirectory) {
        enter(entry.path);
    } else {
        emit picked(entry.path);
    }
}

void FileList::enterParent() {
    if (!QDir(directory_).isRoot()) enter(QDir::cleanPath(QDir(directory_).absoluteFilePath("..")));
}

int FileList::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : static_cast<int>(entries_.size());
}

QVariant FileList::data(const QModelIndex& index, int role) const {
    if (!index.isValid() || index.row() >= entries_.size()) return {};
    const Entry& entry = entries_[index.row()];
    if (role == kName) return entry.name;
    if (role == kIsDirectory) return entry.isDirectory;
    return {};
}

QHash<int, QByteArray> FileList::roleNames() const {
    return {{kName, "name"}, {kIsDirectory, "isDirectory"}};
}

}  // namespace skavlo
