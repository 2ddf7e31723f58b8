import QtQuick
import Skavlo

Item {
    id: slider

    required property SliderControl control
    required property bool showFocus
    // What a screen reader reads, and may set.
    property real value: 0
    readonly property real minimumValue: control.minimumValue
    readonly property real maximumValue: control.maximumValue
    readonly property real stepSize: (maximumValue - minimumValue) / 20
    property real fraction: 0
    readonly property real thumbSize: 28

    objectName: "slider"
    height: 30
    activeFocusOnTab: true
    Keys.onLeftPressed: control.minus()
    Keys.onDownPressed: control.minus()
    Keys.onRightPressed: control.plus()
    Keys.onUpPressed: control.plus()

    Accessible.role: Accessible.Slider
    Accessible.name: control.name
    Accessible.description: control.valueText
    Accessible.focusable: true
    Accessible.onIncreaseAction: control.plus()
    Accessible.onDecreaseAction: control.minus()

    Component.onCompleted: {
        value = control.value;
        fraction = control.fraction;
    }
    onValueChanged: {
        if (value === control.value)
            return;
        control.drag((value - minimumValue) / (maximumValue - minimumValue));
        control.endDrag();
    }

    Connections {
        target: slider.control
        function onChanged(animated: bool) {
            slider.value = slider.control.value;
            glide.stop();
            if (animated) {
                glide.to = slider.control.fraction;
                glide.start();
            } else {
                slider.fraction = slider.control.fraction;
            }
        }
    }

    NumberAnimation {
        id: glide
        target: slider
        property: "fraction"
        duration: 150
        easing.type: Easing.OutQuad
    }

    Rectangle {
        anchors.verticalCenter: parent.verticalCenter
        width: parent.width
        height: 4
        radius: 2
        color: Theme.systemFill
    }

    Rectangle {
        anchors.verticalCenter: parent.verticalCenter
        width: thumb.x + slider.thumbSize / 2
        height: 4
        radius: 2
        color: Theme.systemBlue
    }

    Rectangle {
        x: thumb.x - 0.5
        y: thumb.y + 1
        width: slider.thumbSize + 1
        height: slider.thumbSize + 1
        radius: height / 2
        color: Qt.rgba(0, 0, 0, 0.14)
    }

    Rectangle {
        id: thumb
        objectName: "sliderThumb"
        x: slider.fraction * (slider.width - slider.thumbSize)
        y: 1
        width: slider.thumbSize
        height: slider.thumbSize
        radius: slider.thumbSize / 2
        color: "white"
        border.width: 0.5
        border.color: "#D8D8D8"
    }

    MouseArea {
        id: area

        property bool grabbed: false
        property real grip: 0
        property real startX: 0

        // The thumb's middle follows the pointer, from where it was gripped.
        function dragTo(x: real) {
            slider.control.drag((x - grip - slider.thumbSize / 2)
                                / (slider.width - slider.thumbSize));
        }

        anchors.fill: parent
        // A finger beside the thumb that moves up or down scrolls the table.
        preventStealing: grabbed
        onPressed: mouse => {
            slider.forceActiveFocus(Qt.MouseFocusReason);
            const middle = thumb.x + slider.thumbSize / 2;
            const onThumb = Math.abs(mouse.x - middle) <= 22;
            grip = onThumb ? mouse.x - middle : 0;
            startX = mouse.x;
            grabbed = onThumb || mouse.source === Qt.MouseEventNotSynthesized;
            if (!onThumb && grabbed)
                dragTo(mouse.x);
        }
        onPositionChanged: mouse => {
            if (!grabbed && Math.abs(mouse.x - startX) > 8)
                grabbed = true;
            if (grabbed)
                dragTo(mouse.x);
        }
        onReleased: mouse => {
            if (!grabbed)
                dragTo(mouse.x);
            grabbed = false;
            slider.control.endDrag();
        }
        onCanceled: {
            if (grabbed)
                slider.control.endDrag();
            grabbed = false;
        }
    }

    FocusRing {
        anchors.topMargin: 0
        anchors.bottomMargin: 0
        shown: slider.showFocus && slider.activeFocus
        radius: 15
    }
}
