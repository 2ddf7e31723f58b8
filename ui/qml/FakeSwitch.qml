import QtQuick
import Skavlo

Item {
    id: fakeSwitch

    required property SwitchControl control
    required property SettingsScreen screen
    required property string name
    required property bool showFocus
    readonly property real position: control.position

    objectName: "switch"
    width: 51
    height: 31
    activeFocusOnTab: true
    enabled: !control.loading
    Keys.onSpacePressed: control.tap()
    Keys.onReturnPressed: control.tap()
    Keys.onEnterPressed: control.tap()

    Accessible.role: Accessible.CheckBox
    Accessible.name: name
    Accessible.checkable: true
    Accessible.checked: control.on
    Accessible.focusable: true
    Accessible.description: control.loading ? screen.texts.busy : ""
    Accessible.onPressAction: control.tap()
    Accessible.onToggleAction: control.tap()

    Rectangle {
        objectName: "track"
        anchors.fill: parent
        radius: 15.5
        color: Theme.mix(Theme.systemGray5, Theme.systemGreen, fakeSwitch.position)
    }

    Rectangle {
        objectName: "thumb"
        x: 2 + 20 * fakeSwitch.position
        y: 2
        width: 27
        height: 27
        radius: 13.5
        color: "white"

        Rectangle {
            objectName: "thumbBorder"
            anchors.fill: parent
            radius: parent.radius
            color: "transparent"
            border.width: 1
            border.color: Qt.rgba(0, 0, 0, 0.1)
        }

        Spinner {
            x: 13.5 - width / 2
            y: 13.5 - height / 2
            scale: 0.8
            visible: fakeSwitch.control.loading
        }
    }

    MouseArea {
        anchors.fill: parent
        onPressed: fakeSwitch.forceActiveFocus(Qt.MouseFocusReason)
        onClicked: fakeSwitch.control.tap()
    }

    FocusRing {
        shown: fakeSwitch.showFocus && fakeSwitch.activeFocus
        radius: 18.5
    }
}
