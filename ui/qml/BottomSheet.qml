import QtQuick
import Skavlo

// What slides up from the lower edge: a title, a button that closes it, and its content.
Item {
    id: sheet

    required property SettingsScreen screen
    required property bool open
    property string title
    property string closeText
    property real contentHeight: 0
    readonly property real panelWidth: Math.min(width, 480)
    readonly property Item panel: panelScope
    property real shown: 0
    default property alias content: body.data
    // Where the keyboard begins.
    property Item firstFocus: closeButton

    anchors.fill: parent
    visible: shown > 0 || open
    enabled: open && !screen.alert
    onOpenChanged: {
        slide.stop();
        slide.to = open ? 1 : 0;
        slide.start();
        if (open)
            firstFocus.forceActiveFocus(Qt.OtherFocusReason);
    }

    NumberAnimation {
        id: slide
        target: sheet
        property: "shown"
        duration: 250
        easing.type: Easing.OutCubic
    }

    Rectangle {
        anchors.fill: parent
        color: Theme.dim
        opacity: sheet.shown

        MouseArea {
            anchors.fill: parent
            onClicked: sheet.screen.closeSheet()
            onWheel: wheel => wheel.accepted = true
        }
    }

    FocusScope {
        id: panelScope
        anchors.horizontalCenter: parent.horizontalCenter
        y: sheet.height - height * sheet.shown
        width: sheet.panelWidth
        height: Math.min(sheet.height - 20, 52 + sheet.contentHeight)
        Keys.onEscapePressed: sheet.screen.closeSheet()

        Accessible.role: Accessible.Dialog
        Accessible.name: sheet.title

        Rectangle {
            width: parent.width
            height: parent.height + Theme.radius // its lower corners are out of sight
            radius: Theme.radius
            color: Theme.sheet

            MouseArea {
                anchors.fill: parent
            }
        }

        Text {
            x: 16
            width: parent.width - 120
            height: 52
            verticalAlignment: Text.AlignVCenter
            text: sheet.title
            color: Theme.label
            font.pixelSize: 17
            font.weight: Font.Bold
            elide: Text.ElideRight
        }

        TextButton {
            id: closeButton
            objectName: "closeButton"
            anchors.right: parent.right
            anchors.rightMargin: 10
            y: 8
            width: 80
            height: 36
            groundRadius: 8
            text: sheet.closeText
            weight: Font.Bold
            showFocus: sheet.screen.keyboardNavigation
            onClicked: sheet.screen.closeSheet()
        }

        Item {
            id: body
            y: 52
            width: parent.width
            height: parent.height - y
        }
    }
}
