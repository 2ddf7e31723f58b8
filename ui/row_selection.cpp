// Taps on rows, the restore dialog, and the title that fades in while the table scrolls.
#include <algorithm>

#include "ui/settings_rows.h"
#include "ui/settings_view_controller.h"

namespace skavlo {

namespace {

constexpr int kImagePickerRow = 3;
constexpr double kFadeStart = 50;  // points scrolled
constexpr double kFadeLength = 30;

}  // namespace

void SettingsViewController::didSelectRowAtIndexPath(IndexPath indexPath) {
    view_.endEditing();
    view_.deselectRow(indexPath, true);
    if (indexPath.section != kDisplaySection) return;
    const int mode = displayModeOf(skv_settings);
    const int row = indexPath.row;
    if (row == restoreRowIndex(skv_settings)) {
        presentRestoreAlert();
    } else if (row >= static_cast<int>(DisplayMode::color) &&
               row <= static_cast<int>(DisplayMode::emoji)) {
        if (row != mode) skv_displayModeChanged(SKVFakeSwitch(row));
    } else if (row == kImagePickerRow && mode == static_cast<int>(DisplayMode::image)) {
        skv_presentImagePicker();
    }
}

void SettingsViewController::presentRestoreAlert() {
    view_.presentAlert({.title = L(TextId::restoreSettings),
                        .message = L(TextId::restoreQuestion),
                        .actions = {
                            {.title = L(TextId::cancel), .style = AlertActionStyle::cancel},
                            {.title = L(TextId::restore),
                             .style = AlertActionStyle::destructive,
                             .handler = whileAlive([this] { skv_restoreDefaults(); })},
                        }});
}

void SettingsViewController::scrollViewDidScroll(const ScrollPosition& scrollView) {
    const double scrolled = scrollView.adjustedContentInsetTop + scrollView.contentOffsetY;
    view_.setNavTitleAlpha(std::min(std::max((scrolled - kFadeStart) / kFadeLength, 0.0), 1.0));
}

}  // namespace skavlo
