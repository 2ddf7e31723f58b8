#pragma once

#include <QQuickView>

#include "ui/application_notifications.h"
#include "ui/shell/settings_screen.h"

namespace skavlo {

// Families in the order in which a text looks for its characters: Chinese, then coloured emoji. The
// desktop's own face first would draw emoji without colour.
QStringList fontFamilies();

// The window's size at first, in points, on a screen with so much room: a phone's where it fits.
QSize defaultWindowSize(QSize available);

// The application's only window.
class SettingsWindow : public QQuickView {
    Q_OBJECT

  public:
    // Both outlive it.
    SettingsWindow(SettingsScreen& screen, ApplicationNotifications& application);

  protected:
    bool event(QEvent* event) override;
    void exposeEvent(QExposeEvent* event) override;
    void hideEvent(QHideEvent* event) override;

  private:
    void noteForeground(bool inForeground);

    SettingsScreen& screen_;
    ApplicationNotifications& application_;
    bool inForeground_ = false;
};

}  // namespace skavlo
