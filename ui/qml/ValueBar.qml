import QtQuick
import Skavlo

// A bar of colours with a knob at a value from 0 to 1.
Item {
    id: bar

    property string name
    property real value: 0
    readonly property real minimumValue: 0
    readonly property real maximumValue: 1
    readonly property real stepSize: 0.01
    property alias gradient: ground.gradient
    property bool checkered: false
    property bool showFocus: false
    signal moved(real value)

    function step(by: real) {
        moved(Math.max(0, Math.min(1, value + by)));
    }

    height: 28
    activeFocusOnTab: true
    Keys.onLeftPressed: step(-stepSize)
    Keys.onDownPressed: step(-stepSize)
    Keys.onRightPressed: step(stepSize)
    Keys.onUpPressed: step(stepSize)

    Accessible.role: Accessible.Slider
    Accessible.name: name
    Accessible.focusable: true
    Accessible.onIncreaseAction: step(stepSize)
    Accessible.onDecreaseAction: step(-stepSize)

    Checkerboard {
        anchors.fill: ground
        visible: bar.checkered
        cornerRadius: 14
    }

    Rectangle {
        id: ground
        anchors.fill: parent
        radius: 14
        border.width: 1
        border.color: Theme.separator
    }

    Rectangle {
        x: bar.value * (bar.width - width)
        width: 28
        height: 28
        radius: 14
        color: "transparent"
        border.width: 4
        border.color: "white"

        Rectangle {
            anchors.fill: parent
            radius: 14
            color: "transparent"
            border.width: 1
            border.color: Qt.rgba(0, 0, 0, 0.35)
        }
    }

    MouseArea {
        function moveTo(x: real) {
            bar.moved(Math.max(0, Math.min(1, (x - 14) / (bar.width - 28))));
        }

        anchors.fill: parent
        preventStealing: true
        onPressed: mouse => {
            bar.forceActiveFocus(Qt.MouseFocusReason);
            moveTo(mouse.x);
        }
        onPositionChanged: mouse => moveTo(mouse.x)
    }

    FocusRing {
        shown: bar.showFocus && bar.activeFocus
        radius: 17
    }
}
