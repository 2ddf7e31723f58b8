import QtQuick
import Skavlo

WellFace {
    id: well

    required property ColorWellControl control
    required property SettingsScreen screen
    required property string name

    function open() {
        screen.openColorPicker(control);
    }

    objectName: "well"
    width: 44
    height: 44
    color: control.color
    activeFocusOnTab: true
    Keys.onSpacePressed: open()
    Keys.onReturnPressed: open()
    Keys.onEnterPressed: open()

    Accessible.role: Accessible.Button
    Accessible.name: name
    Accessible.description: control.hex
    Accessible.focusable: true
    Accessible.onPressAction: open()

    MouseArea {
        anchors.fill: parent
        onPressed: well.forceActiveFocus(Qt.MouseFocusReason)
        onClicked: well.open()
    }

    FocusRing {
        anchors.margins: 3
        shown: well.screen.keyboardNavigation && well.activeFocus
        radius: 19
    }
}
