#pragma once

#include <QtQml/qqmlregistration.h>
#include <QImage>
#include <QList>
#include <QObject>
#include <QPointer>
#include <QString>
#include <deque>
#include <functional>
#include <optional>

#include "ui/settings_view.h"
#include "ui/shell/alert_item.h"
#include "ui/shell/color_picker.h"
#include "ui/shell/file_list.h"
#include "ui/shell/section.h"
#include "ui/shell/splash_player.h"
#include "ui/shell/texts.h"

namespace skavlo {

class SettingsViewController;

// What the screen needs of the desktop.
struct ScreenDesktop {
    // Asks the desktop for one image file. `answer` gets its path, an empty one when the user gave
    // up, or nothing when the desktop cannot ask. May be empty: the desktop never can.
    std::function<void(const QString& title, const QString& filterName,
                       std::function<void(std::optional<QString> path)> answer)>
        pickImage;
    std::function<void(const QString& address)> openLink;
    // Decodes an image file of a kind that Qt does not know; a null image when nobody knows it. May
    // be empty: nobody does.
    std::function<void(const QString& path, std::function<void(QImage image)> answer)> decodeImage;
    QString iconPath;  // of the application's icon; the file may be missing
};

// The settings screen between its controller and QML, which binds to the properties and calls the
// actions. QML holds no decisions.
class SettingsScreen : public QObject, public SettingsView {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("made by the application")
    Q_PROPERTY(QString languageButtonTitle READ languageButtonTitle NOTIFY headerChanged)
    // HTML with the channel as a link.
    Q_PROPERTY(QString aboutHtml READ aboutHtml NOTIFY headerChanged)
    Q_PROPERTY(QString aboutText READ aboutText NOTIFY headerChanged)
    Q_PROPERTY(QString channel READ channel NOTIFY headerChanged)
    Q_PROPERTY(skavlo::Texts texts READ texts NOTIFY textsChanged)
    Q_PROPERTY(double navTitleAlpha READ navTitleAlpha NOTIFY navTitleAlphaChanged)
    Q_PROPERTY(QList<skavlo::Section*> sections READ sections NOTIFY sectionsChanged)
    // Each of these is null while nothing of the kind is shown.
    Q_PROPERTY(skavlo::AlertItem* alert READ alert NOTIFY alertChanged)
    Q_PROPERTY(skavlo::ColorPicker* colorPicker READ colorPicker NOTIFY sheetChanged)
    Q_PROPERTY(skavlo::EmojiFieldControl* emojiSheet READ emojiSheet NOTIFY sheetChanged)
    Q_PROPERTY(skavlo::FileList* fileList READ fileList NOTIFY sheetChanged)
    Q_PROPERTY(bool importing READ isImporting NOTIFY importingChanged)
    Q_PROPERTY(bool dark READ isDark NOTIFY darkChanged)
    // Whether the user moves the focus with the keyboard, so that it is to be seen.
    Q_PROPERTY(bool keyboardNavigation READ keyboardNavigation NOTIFY keyboardNavigationChanged)
    Q_PROPERTY(QString iconPath READ iconPath CONSTANT)
    Q_PROPERTY(skavlo::SplashPlayer* splash READ splash CONSTANT)
    Q_PROPERTY(QStringList emojis READ emojis CONSTANT)

  public:
    explicit SettingsScreen(ScreenDesktop desktop);
    // As that of the desktop; the answer may never come.
    void decodeImage(const QString& path, std::function<void(QImage image)> answer);
    // Outlives every call from QML.
    void setController(SettingsViewController* controller) { controller_ = controller; }

    // SettingsView
    void setHeader(const ScreenHeader& header) override;
    void setNavTitleAlpha(double alpha) override;
    [[nodiscard]] ScrollPosition tableScrollPosition() const override { return scrollPosition_; }
    void reloadData() override;
    void reloadSection(int section) override;
    void deselectRow(IndexPath indexPath, bool animated) override;
    void endEditing() override;
    void presentAlert(Alert alert) override;
    void presentDocumentPicker() override;
    void setImporting(bool importing) override;

    [[nodiscard]] QString languageButtonTitle() const;
    [[nodiscard]] QString aboutHtml() const;
    [[nodiscard]] QString aboutText() const { return QString::fromStdString(header_.aboutText); }
    [[nodiscard]] QString channel() const { return QString::fromStdString(header_.channel); }
    [[nodiscard]] const Texts& texts() const { return texts_; }
    [[nodiscard]] double navTitleAlpha() const { return navTitleAlpha_; }
    [[nodiscard]] const QList<Section*>& sections() const { return sections_; }
    [[nodiscard]] AlertItem* alert() const { return alerts_.empty() ? nullptr : alerts_.front(); }
    [[nodiscard]] ColorPicker* colorPicker() const { return colorPicker_; }
    [[nodiscard]] EmojiFieldControl* emojiSheet() const { return emojiSheet_; }
    [[nodiscard]] FileList* fileList() const { return fileList_; }
    [[nodiscard]] bool isImporting() const { return importing_; }
    [[nodiscard]] bool isDark() const { return dark_; }
    [[nodiscard]] bool keyboardNavigation() const { return keyboardNavigation_; }
    [[nodiscard]] const QString& iconPath() const { return desktop_.iconPath; }
    [[nodiscard]] SplashPlayer* splash() const { return splash_; }
    [[nodiscard]] static QStringList emojis();

    void setDark(bool dark);
    void setKeyboardNavigation(bool keyboardNavigation);

    // QML's actions.
    Q_INVOKABLE void toggleLanguage();
    Q_INVOKABLE void showInfo();
    Q_INVOKABLE void openChannel();
    Q_INVOKABLE void tableScrolled(double insetTop, double offsetY);
    Q_INVOKABLE void openColorPicker(skavlo::ColorWellControl* well);
    Q_INVOKABLE void openEmojiSheet(skavlo::EmojiFieldControl* field);
    Q_INVOKABLE void chooseEmoji(const QString& emoji);
    Q_INVOKABLE void closeSheet();
    // The alert that was answered has faded away: the next one's turn.
    Q_INVOKABLE void alertDismissed();

  signals:
    void headerChanged();
    void textsChanged();
    void navTitleAlphaChanged();
    void sectionsChanged();
    void alertChanged();
    void sheetChanged();
    void importingChanged();
    void darkChanged();
    void keyboardNavigationChanged();

  private:
    void fill(int section, SectionContent& content);
    void reload(int section, bool fades);
    void watchEditing(EmojiFieldControl* field);
    void openFileList();
    void picked(const QString& path);
    void retire(QObject* sheet);

    ScreenDesktop desktop_;
    SettingsViewController* controller_ = nullptr;
    ScreenHeader header_;
    Texts texts_;
    double navTitleAlpha_ = 0;
    ScrollPosition scrollPosition_;
    QList<Section*> sections_;
    std::deque<AlertItem*> alerts_;
    QPointer<EmojiFieldControl> editing_;
    QPointer<EmojiFieldControl> emojiSheet_;
    QPointer<ColorPicker> colorPicker_;
    QPointer<FileList> fileList_;
    QPointer<QObject> retired_;
    SplashPlayer* splash_;
    bool picking_ = false;
    bool importing_ = false;
    bool dark_ = false;
    bool keyboardNavigation_ = false;
};

}  // namespace skavlo
