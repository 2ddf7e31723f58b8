#include <gtest/gtest.h>

#include <QGuiApplication>

#include "tests/unit/desktop/fake_portal.h"

int main(int argc, char** argv) {
    testing::InitGoogleTest(&argc, argv);
    qputenv("QT_QPA_PLATFORM", "offscreen");
    skavlo::PrivateBus bus;
    if (!bus.start()) qputenv("DBUS_SESSION_BUS_ADDRESS", "disabled:");
    QGuiApplication application(argc, argv);
    return RUN_ALL_TESTS();
}
