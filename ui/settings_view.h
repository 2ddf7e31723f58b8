#pragma once

#include "ui/alert.h"
#include "ui/screen_header.h"
#include "ui/table_view_cell.h"

namespace skavlo {

// Where a scrolling view stands, in points.
struct ScrollPosition {
    double adjustedContentInsetTop = 0;
    double contentOffsetY = 0;
};

// What SettingsViewController asks of the screen. Main thread only. The view asks the controller
// for rows when it is told to reload, and calls its actions when the user works them.
class SettingsView {
  public:
    virtual ~SettingsView() = default;
    // Replaces the header and the navigation bar's title view, which starts transparent.
    virtual void setHeader(const ScreenHeader& header) = 0;
    virtual void setNavTitleAlpha(double alpha) = 0;
    [[nodiscard]] virtual ScrollPosition tableScrollPosition() const = 0;
    virtual void reloadData() = 0;
    // With a cross-fade of the section's old and new rows.
    virtual void reloadSection(int section) = 0;
    virtual void deselectRow(IndexPath indexPath, bool animated) = 0;
    // The text field that is being edited commits through its own action.
    virtual void endEditing() = 0;
    virtual void presentAlert(Alert alert) = 0;
    // Answers with SettingsViewController::documentPicker, or not at all.
    virtual void presentDocumentPicker() = 0;
    // Whether an imported image is being made smaller.
    virtual void setImporting(bool importing) = 0;
};

}  // namespace skavlo
