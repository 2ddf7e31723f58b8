// What the desktop does for the application, through its portal on the session bus.
#pragma once

#include <QObject>
#include <QString>
#include <QVariantMap>
#include <functional>
#include <optional>

namespace skavlo {

// One question to the desktop that asks the user for an image file. Deletes itself once answered.
// A portal that begins to ask too late is told that nobody waits any more.
class ImageFileRequest : public QObject {
    Q_OBJECT

  public:
    // The file's path; empty: the user gave up; none: the desktop cannot ask.
    using Answer = std::function<void(std::optional<QString> path)>;

    // `parentWindow`: how the portal names the window that the dialog belongs to, or empty.
    static void start(const QString& parentWindow, const QString& title, const QString& filterName,
                      Answer answer);

  private slots:
    void response(uint status, const QVariantMap& results);

  private:
    explicit ImageFileRequest(Answer answer);
    void send(const QString& parentWindow, const QString& title, const QString& filterName);
    bool listenAt(const QString& path);
    void close(const QString& path);
    void finish(const std::optional<QString>& path);
    void answerWith(const std::optional<QString>& path);

    Answer answer_;  // null once given
    QString path_;
    bool asks_ = false;
};

// Opens a web address with the desktop's program for it.
void openLink(const QString& parentWindow, const QString& address);

}  // namespace skavlo
