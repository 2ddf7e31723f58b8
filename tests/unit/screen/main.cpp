#include <gtest/gtest.h>

#include <QAccessible>
#include <QFont>
#include <QGuiApplication>

#include "tests/unit/screen/screen_fixture.h"
#include "ui/shell/settings_window.h"

int main(int argc, char** argv) {
    testing::InitGoogleTest(&argc, argv);
    qputenv("QT_QPA_PLATFORM", "offscreen");
    qputenv("QT_QUICK_BACKEND", "software");
    qputenv("QSG_RENDER_LOOP", "basic");
    qputenv("DBUS_SESSION_BUS_ADDRESS", "disabled:");  // nothing here asks the desktop
    QGuiApplication application(argc, argv);
    QFont font;
    font.setFamilies(skavlo::fontFamilies());
    QGuiApplication::setFont(font);
    skavlo::SteppedAnimations::instance().install();
    QAccessible::setActive(true);
    skavlo::watchComplaints();
    return RUN_ALL_TESTS();
}
