import QtQuick
import Skavlo

// A bar of colours with a knob at a value from 0 to 1.
Item {
    id: bar

    property string name
    // Where the knob stands, 0 to 1; bound by whoever shows the bar and hears where it is to move.
    property real fraction: 0
    // What a screen reader reads, and may set.
    property real value: 0
    readonly property real minimumValue: 0
    readonly property real maximumValue: 1
    readonly property real stepSize: 0.01
    property alias gradient: ground.gradient
    property bool checkered: false
    property bool showFocus: false
    signal moved(real value)

    function moveTo(place: real) {
        moved(Math.max(0, Math.min(1, place)));
    }
    function step(by: real) {
        moveTo(fraction + by);
    }

    height: 28
    activeFocusOnTab: true
    onFractionChanged: value = fraction
    onValueChanged: {
        if (value === fraction)
            return;
        moveTo(value);
        value = fraction; // which need not have changed
    }
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
        x: bar.fraction * (bar.width - width)
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
            bar.moveTo((x - 14) / (bar.width - 28));
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
