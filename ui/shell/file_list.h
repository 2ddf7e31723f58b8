#pragma once

#include <QtQml/qqmlregistration.h>
#include <QAbstractListModel>
#include <QFileInfo>
#include <QList>

namespace skavlo {

// A directory's entries for choosing an image file where the desktop has no chooser of its own:
// the parent, directories, then images by the endings of their names.
class FileList : public QAbstractListModel {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("made by the screen")
    Q_PROPERTY(QString directory READ directory NOTIFY directoryChanged)
    Q_PROPERTY(bool empty READ isEmpty NOTIFY directoryChanged)

  public:
    FileList(const QString& directory, QObject* parent);

    [[nodiscard]] const QString& directory() const { return directory_; }
    // Nothing but the way up.
    [[nodiscard]] bool isEmpty() const;
    // Enters a directory; tells of a file.
    Q_INVOKABLE void choose(int row);
    Q_INVOKABLE void enterParent();

    [[nodiscard]] int rowCount(const QModelIndex& parent) const override;
    [[nodiscard]] QVariant data(const QModelIndex& index, int role) const override;
    [[nodiscard]] QHash<int, QByteArray> roleNames() const override;

  signals:
    void directoryChanged();
    void picked(const QString& path);

  private:
    struct Entry {
        QString name;
        QString path;
        bool isDirectory = false;
    };
    void enter(const QString& directory);

    QString directory_;
    QList<Entry> entries_;
};

}  // namespace skavlo
