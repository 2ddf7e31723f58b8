import QtQuick
import QtQuick.Window
import Skavlo

BottomSheet {
    id: sheet

    // Stays the last one while the sheet slides away.
    property ColorPicker picker: null
    readonly property bool ready: picker !== null
    readonly property color opaque: ready ? picker.opaque : "white"

    function take() {
        if (screen.colorPicker)
            picker = screen.colorPicker;
    }

    objectName: "colorSheet"
    open: screen.colorPicker !== null
    title: ready ? picker.title : ""
    closeText: screen.texts.done
    contentHeight: controls.height + 24
    firstFocus: spectrum
    Component.onCompleted: take()

    Connections {
        target: sheet.screen
        function onSheetChanged() {
            sheet.take();
        }
    }

    Flickable {
        id: scroller

        readonly property Item focusItem: Window.activeFocusItem

        // What the keyboard has reached is to be seen, in a low window, too.
        onFocusItemChanged: {
            let ancestor = sheet.screen.keyboardNavigation ? focusItem : null;
            while (ancestor && ancestor !== controls)
                ancestor = ancestor.parent;
            if (!ancestor)
                return;
            const room = 4;
            const top = focusItem.mapToItem(controls, 0, 0).y - room;
            const bottom = top + focusItem.height + 2 * room;
            if (top < contentY)
                contentY = Math.max(0, top);
            else if (bottom > contentY + height)
                contentY = Math.min(bottom, contentHeight) - height;
        }

        anchors.fill: parent
        contentHeight: controls.height + 24
        clip: true
        boundsBehavior: Flickable.StopAtBounds

        Column {
            id: controls
            x: 16
            width: parent.width - 32
            spacing: 12

            Item {
                id: spectrum

                function step(saturation: real, brightness: real) {
                    sheet.picker.setSpectrum(sheet.picker.saturation + saturation,
                                             sheet.picker.brightness + brightness);
                }

                objectName: "spectrum"
                width: parent.width
                height: 170
                activeFocusOnTab: true
                Keys.onLeftPressed: step(-0.01, 0)
                Keys.onRightPressed: step(0.01, 0)
                Keys.onUpPressed: step(0, 0.01)
                Keys.onDownPressed: step(0, -0.01)
                Accessible.role: Accessible.ColorChooser
                Accessible.name: sheet.screen.texts.spectrum
                Accessible.description: sheet.ready ? sheet.picker.hex : ""
                Accessible.focusable: true
                Accessible.onIncreaseAction: step(0.01, 0)
                Accessible.onDecreaseAction: step(-0.01, 0)

                Rectangle {
                    anchors.fill: parent
                    radius: 8
                    gradient: Gradient {
                        orientation: Gradient.Horizontal
                        GradientStop { position: 0; color: "white" }
                        GradientStop {
                            position: 1
                            color: sheet.ready ? sheet.picker.pureHue : "red"
                        }
                    }
                }

                Rectangle {
                    anchors.fill: parent
                    radius: 8
                    gradient: Gradient {
                        GradientStop { position: 0; color: "#00000000" }
                        GradientStop { position: 1; color: "#FF000000" }
                    }
                }

                Rectangle {
                    objectName: "spectrumKnob"
                    x: (sheet.ready ? sheet.picker.saturation : 0) * spectrum.width - width / 2
                    y: (sheet.ready ? 1 - sheet.picker.brightness : 0) * spectrum.height
                       - height / 2
                    width: 24
                    height: 24
                    radius: 12
                    color: sheet.opaque
                    border.width: 3
                    border.color: "white"

                    Rectangle {
                        anchors.fill: parent
                        radius: 12
                        color: "transparent"
                        border.width: 1
                        border.color: Qt.rgba(0, 0, 0, 0.35)
                    }
                }

                MouseArea {
                    function moveTo(mouse: var) {
                        sheet.picker.setSpectrum(mouse.x / width, 1 - mouse.y / height);
                    }

                    anchors.fill: parent
                    preventStealing: true
                    onPressed: mouse => {
                        spectrum.forceActiveFocus(Qt.MouseFocusReason);
                        moveTo(mouse);
                    }
                    onPositionChanged: mouse => moveTo(mouse)
                }

                FocusRing {
                    shown: sheet.screen.keyboardNavigation && spectrum.activeFocus
                    radius: 11
                }
            }

            ValueBar {
                objectName: "hueBar"
                width: parent.width
                name: sheet.screen.texts.hue
                showFocus: sheet.screen.keyboardNavigation
                fraction: sheet.ready ? sheet.picker.hue : 0
                onMoved: value => sheet.picker.hue = value
                gradient: Gradient {
                    orientation: Gradient.Horizontal
                    GradientStop { position: 0; color: "#FF0000" }
                    GradientStop { position: 1 / 6; color: "#FFFF00" }
                    GradientStop { position: 2 / 6; color: "#00FF00" }
                    GradientStop { position: 3 / 6; color: "#00FFFF" }
                    GradientStop { position: 4 / 6; color: "#0000FF" }
                    GradientStop { position: 5 / 6; color: "#FF00FF" }
                    GradientStop { position: 1; color: "#FF0000" }
                }
            }

            ColorComponentBar {
                objectName: "redBar"
                width: parent.width
                name: sheet.screen.texts.red
                showFocus: sheet.screen.keyboardNavigation
                fraction: sheet.ready ? sheet.picker.red : 0
                from: Qt.rgba(0, sheet.opaque.g, sheet.opaque.b, 1)
                to: Qt.rgba(1, sheet.opaque.g, sheet.opaque.b, 1)
                onMoved: value => sheet.picker.red = value
            }

            ColorComponentBar {
                objectName: "greenBar"
                width: parent.width
                name: sheet.screen.texts.green
                showFocus: sheet.screen.keyboardNavigation
                fraction: sheet.ready ? sheet.picker.green : 0
                from: Qt.rgba(sheet.opaque.r, 0, sheet.opaque.b, 1)
                to: Qt.rgba(sheet.opaque.r, 1, sheet.opaque.b, 1)
                onMoved: value => sheet.picker.green = value
            }

            ColorComponentBar {
                objectName: "blueBar"
                width: parent.width
                name: sheet.screen.texts.blue
                showFocus: sheet.screen.keyboardNavigation
                fraction: sheet.ready ? sheet.picker.blue : 0
                from: Qt.rgba(sheet.opaque.r, sheet.opaque.g, 0, 1)
                to: Qt.rgba(sheet.opaque.r, sheet.opaque.g, 1, 1)
                onMoved: value => sheet.picker.blue = value
            }

            ColorComponentBar {
                objectName: "alphaBar"
                width: parent.width
                name: sheet.screen.texts.opacity
                showFocus: sheet.screen.keyboardNavigation
                percent: true
                fraction: sheet.ready ? sheet.picker.alpha : 0
                from: Qt.rgba(sheet.opaque.r, sheet.opaque.g, sheet.opaque.b, 0)
                to: sheet.opaque
                onMoved: value => sheet.picker.alpha = value
            }

            Item {
                width: parent.width
                height: 44

                Checkerboard {
                    width: 44
                    height: 44
                    cornerRadius: 8
                }

                Rectangle {
                    objectName: "preview"
                    width: 44
                    height: 44
                    radius: 8
                    color: sheet.ready ? sheet.picker.color : "white"
                    border.width: 1
                    border.color: Theme.separator
                }

                Rectangle {
                    x: 60
                    y: 4
                    width: parent.width - 60
                    height: 36
                    radius: 8
                    color: Theme.sheetField

                    TextInput {
                        id: hexInput
                        objectName: "hexField"

                        // Commits what is a colour, and shows the colour again what was not.
                        function commit() {
                            if (text !== sheet.picker.hex)
                                sheet.picker.setHex(text);
                            text = sheet.picker.hex;
                        }
                        function show() {
                            if (sheet.ready && !activeFocus)
                                text = sheet.picker.hex;
                        }

                        anchors.fill: parent
                        anchors.leftMargin: 12
                        anchors.rightMargin: 12
                        verticalAlignment: TextInput.AlignVCenter
                        activeFocusOnTab: true
                        selectByMouse: true
                        maximumLength: 9
                        color: Theme.label
                        selectionColor: Theme.systemBlue
                        font.pixelSize: 17
                        onAccepted: commit()
                        onActiveFocusChanged: {
                            if (!activeFocus && sheet.ready && sheet.open)
                                commit();
                        }
                        Accessible.role: Accessible.EditableText
                        Accessible.name: sheet.screen.texts.hex
                        Accessible.editable: true
                        Accessible.focusable: true

                        Connections {
                            target: sheet.picker
                            function onChanged() {
                                hexInput.show();
                            }
                        }

                        Connections {
                            target: sheet
                            function onPickerChanged() {
                                hexInput.show();
                            }
                        }
                    }

                    FocusRing {
                        shown: sheet.screen.keyboardNavigation && hexInput.activeFocus
                        radius: 11
                    }
                }
            }
        }
    }
}
