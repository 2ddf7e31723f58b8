// The import of a picture that becomes the marker.
#include <functional>

#include "settings/image_import.h"
#include "ui/settings_view_controller.h"

namespace skavlo {

void SettingsViewController::skv_presentImagePicker() {
    view_.presentDocumentPicker();
}

void SettingsViewController::documentPicker(
    const std::vector<std::string>& didPickDocumentsAtURLs) {
    // One import at a time: what is picked meanwhile is left alone.
    if (import_ || didPickDocumentsAtURLs.empty()) return;
    const std::string& path = didPickDocumentsAtURLs.front();
    const auto size = system_.files.sizeOf(path);
    if (!size) return;
    if (*size > kCustomImageByteLimit) {
        shrinkImage(path);
    } else if (const auto data = system_.files.read(path)) {
        storeImage(data);
    }
}

void SettingsViewController::shrinkImage(const std::string& path) {
    import_ = std::make_shared<bool>(true);
    view_.setImporting(true);
    system_.imageShrinker.shrinkToPng(
        path, shrinkFactors(), kCustomImageByteLimit,
        whileAlive([this, import = std::weak_ptr<const bool>(import_)](const std::string& png) {
            if (import.expired()) return;
            endImport();
            storeImage(png.empty() ? std::nullopt : std::optional(png));
        }));
}

// Without data, as of an image that could not be decoded, the old one goes and none takes its
// place.
void SettingsViewController::storeImage(const std::optional<std::string>& data) {
    const std::string path = system_.directory.customImageFile();
    if (system_.files.fileExistsAtPath(path)) system_.files.unlink(path);
    if (data) system_.files.writeAtomically(path, *data);
    skv_settings["imagePath"] = path;
    skv_saveSettingsAndNotify();
    auto reload = whileAlive([this] { skv_reloadTable(); });
    view_.presentAlert(
        {.title = L(TextId::success),
         .message = L(TextId::imageLoaded),
         .actions = {{.title = L(TextId::ok), .handler = [&mainQueue = system_.mainQueue, reload] {
                          mainQueue.async(reload);
                      }}}});
}

void SettingsViewController::endImport() {
    if (!import_) return;
    import_.reset();
    view_.setImporting(false);
}

}  // namespace skavlo
