import QtQuick
import QtQuick.Window
import Skavlo

Rectangle {
    id: bar

    required property SettingsScreen screen
    // How far the table has been scrolled from rest.
    required property real scrolled

    objectName: "navigationBar"
    height: Theme.barHeight
    color: Theme.groupedBackground

    MouseArea {
        anchors.fill: parent // what lies below is not to be hit
    }

    Item {
        objectName: "titleView"
        anchors.horizontalCenter: parent.horizontalCenter
        y: 4
        width: 110
        height: 36

        Item {
            objectName: "navTitleView"
            anchors.fill: parent
            opacity: bar.screen.navTitleAlpha

            RoundedImage {
                objectName: "navIcon"
                y: 4
                width: 28
                height: 28
                cornerRadius: 6
                path: bar.screen.iconPath
                tintColor: Theme.systemGray
            }

            Text {
                objectName: "navTitle"
                x: 36
                width: 74
                height: 36
                verticalAlignment: Text.AlignVCenter
                text: "Skavlo"
                color: Theme.label
                font.pixelSize: 17
                font.weight: Font.Bold
            }
        }
    }

    Rectangle {
        anchors.bottom: parent.bottom
        width: parent.width
        height: 1 / Screen.devicePixelRatio
        opacity: Math.max(0, Math.min(1, bar.scrolled / 16))
        color: Theme.separator
    }
}
