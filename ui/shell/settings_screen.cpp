#include "ui/shell/settings_screen.h"

#include <QDir>
#include <algorithm>
#include <utility>

#include "ui/settings_view_controller.h"

namespace skavlo {

SettingsScreen::SettingsScreen(ScreenDesktop desktop)
    : desktop_(std::move(desktop)), splash_(new SplashPlayer(this)) {}

void SettingsScreen::setHeader(const ScreenHeader& header) {
    header_ = header;
    emit headerChanged();
    setNavTitleAlpha(0);
}

QString SettingsScreen::languageButtonTitle() const {
    return QString::fromStdString(header_.languageButtonTitle);
}

QString SettingsScreen::aboutHtml() const {
    const QString address = channel().toHtmlEscaped();
    QString html = aboutText().toHtmlEscaped();
    if (!address.isEmpty()) {
        const QString link =
            QStringLiteral("<a style=\"text-decoration:none\" href=\"%1\">%1</a>").arg(address);
        html.replace(address, link);
    }
    return html.replace(u'\n', QStringLiteral("<br>"));
}

void SettingsScreen::setNavTitleAlpha(double alpha) {
    if (std::exchange(navTitleAlpha_, alpha) != alpha) emit navTitleAlphaChanged();
}

void SettingsScreen::reloadData() {
    texts_ = textsIn([this](const char* zh, const char* en) { return controller_->L(zh, en); });
    emit textsChanged();
    while (sections_.size() < controller_->numberOfSections()) {
        sections_.append(new Section(this));
        if (sections_.size() == controller_->numberOfSections()) emit sectionsChanged();
    }
    for (int section = 0; section < sections_.size(); ++section) reload(section, false);
    controller_->viewDidLayoutSubviews();
}

void SettingsScreen::reloadSection(int section) {
    if (section >= 0 && section < sections_.size()) reload(section, true);
}

void SettingsScreen::reload(int section, bool fades) {
    const auto title = controller_->titleForHeaderInSection(section);
    sections_[section]->reload(
        title ? QString::fromStdString(*title) : QString(), fades,
        [this, section](SectionContent& content) { fill(section, content); });
}

void SettingsScreen::fill(int section, SectionContent& content) {
    const int rows = controller_->numberOfRowsInSection(section);
    for (int row = 0; row < rows; ++row) {
        const IndexPath indexPath{section, row};
        auto* cell = new Cell(
            controller_->cellForRowAtIndexPath(indexPath),
            [this, indexPath] { controller_->didSelectRowAtIndexPath(indexPath); }, &content);
        watchEditing(cell->emojiField());
        content.add(cell);
    }
}

void SettingsScreen::watchEditing(EmojiFieldControl* field) {
    if (!field) return;
    connect(field, &EmojiFieldControl::editingChanged, this, [this, field] {
        if (field->isEditing()) {
            editing_ = field;
        } else if (editing_ == field) {
            editing_ = nullptr;
        }
    });
}

void SettingsScreen::deselectRow(IndexPath indexPath, bool animated) {
    if (indexPath.section < 0 || indexPath.section >= sections_.size()) return;
    if (Cell* cell = sections_[indexPath.section]->cell(indexPath.row)) cell->deselect(animated);
}

void SettingsScreen::endEditing() {
    if (editing_) editing_->end();
}

void SettingsScreen::presentAlert(Alert alert) {
    alerts_.push_back(new AlertItem(std::move(alert), this));
    if (alerts_.size() == 1) emit alertChanged();
}

void SettingsScreen::alertDismissed() {
    if (alerts_.empty()) return;
    alerts_.front()->deleteLater();
    alerts_.pop_front();
    emit alertChanged();
}

void SettingsScreen::presentDocumentPicker() {
    if (!desktop_.pickImage) return openFileList();
    if (std::exchange(picking_, true)) return;
    const auto answer = [self = QPointer(this)](const std::optional<QString>& path) {
        if (!self) return;
        self->picking_ = false;
        if (!path) return self->openFileList();
        if (!path->isEmpty()) self->picked(*path);
    };
    desktop_.pickImage(texts_.chooseImage, texts_.images, answer);
}

void SettingsScreen::openFileList() {
    closeSheet();
    fileList_ = new FileList(QDir::homePath(), this);
    connect(fileList_, &FileList::picked, this, [this](const QString& path) {
        closeSheet();
        picked(path);
    });
    emit sheetChanged();
}

void SettingsScreen::decodeImage(const QString& path, std::function<void(QImage)> answer) {
    if (desktop_.decodeImage) desktop_.decodeImage(path, std::move(answer));
}

void SettingsScreen::picked(const QString& path) {
    controller_->documentPicker({QFile::encodeName(path).toStdString()});
}

void SettingsScreen::setImporting(bool importing) {
    if (std::exchange(importing_, importing) != importing) emit importingChanged();
}

void SettingsScreen::setDark(bool dark) {
    if (std::exchange(dark_, dark) != dark) emit darkChanged();
}

void SettingsScreen::setKeyboardNavigation(bool keyboardNavigation) {
    if (std::exchange(keyboardNavigation_, keyboardNavigation) != keyboardNavigation) {
        emit keyboardNavigationChanged();
    }
}

void SettingsScreen::toggleLanguage() {
    controller_->skv_toggleLanguage();
}

void SettingsScreen::showInfo() {
    controller_->skv_infoBtnClicked();
}

void SettingsScreen::openChannel() {
    if (desktop_.openLink) desktop_.openLink(channel());
}

void SettingsScreen::tableScrolled(double insetTop, double offsetY) {
    scrollPosition_ = {insetTop, offsetY};
    if (controller_) controller_->scrollViewDidScroll(scrollPosition_);
}

void SettingsScreen::openColorPicker(ColorWellControl* well) {
    if (!well) return;
    endEditing();
    closeSheet();
    colorPicker_ = new ColorPicker(*well, this);
    emit sheetChanged();
}

void SettingsScreen::openEmojiSheet(EmojiFieldControl* field) {
    closeSheet();
    emojiSheet_ = field;
    emit sheetChanged();
}

void SettingsScreen::chooseEmoji(const QString& emoji) {
    const QPointer<EmojiFieldControl> field = emojiSheet_;
    closeSheet();
    if (field) field->replace(emoji);
}

void SettingsScreen::closeSheet() {
    if (!colorPicker_ && !emojiSheet_ && !fileList_) return;
    retire(colorPicker_ ? static_cast<QObject*>(colorPicker_) : fileList_);
    colorPicker_ = nullptr;
    emojiSheet_ = nullptr;
    fileList_ = nullptr;
    emit sheetChanged();
}

// QML shows it until it is out of sight; the next one's end is late enough.
void SettingsScreen::retire(QObject* sheet) {
    if (!sheet) return;
    if (retired_) retired_->deleteLater();
    retired_ = sheet;
}

QStringList SettingsScreen::emojis() {
    return QStringLiteral(
               "🍎 👆 👉 🖐️ ✋ 👋 👌 ✌️ 🤞 🤟 👍 👏 "
               "🐾 🐱 🐶 🦊 🐼 🐸 🦄 🐝 🦋 🌸 🌻 🍀 "
               "🌈 ⭐ 🌟 ✨ ⚡ 🔥 💧 ❄️ 🌙 ☀️ ❤️ 🧡 "
               "💛 💚 💙 💜 🖤 💯 🎯 🎈 🎉 🎵 ⚽ 🏀 "
               "🍓 🍊 🍋 🍒 🍑 🍩 🍪 😀 😂 😍 😎 🤖 "
               "👻 👽 🚀 👀")
        .split(u' ');
}

}  // namespace skavlo
