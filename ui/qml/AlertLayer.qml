import QtQuick
import QtQuick.Window
import Skavlo

// The dialog that the screen presents, above everything else.
Item {
    id: layer

    required property SettingsScreen screen
    readonly property AlertItem alert: screen.alert
    property real shown: 0

    objectName: "alertLayer"
    anchors.fill: parent
    visible: alert !== null
    onAlertChanged: {
        if (!alert)
            return;
        fadeOut.stop();
        fadeIn.restart();
        panel.forceActiveFocus(Qt.OtherFocusReason);
        panel.focusCancel();
    }

    Connections {
        target: layer.alert
        function onChosen() {
            fadeIn.stop();
            fadeOut.start();
        }
    }

    NumberAnimation {
        id: fadeIn
        target: layer
        property: "shown"
        from: 0
        to: 1
        duration: 250
        easing.type: Easing.OutCubic
    }

    NumberAnimation {
        id: fadeOut
        target: layer
        property: "shown"
        to: 0
        duration: 200
        onFinished: layer.screen.alertDismissed()
    }

    Rectangle {
        anchors.fill: parent
        color: Theme.dim
        opacity: layer.shown

        MouseArea {
            anchors.fill: parent
            onWheel: wheel => wheel.accepted = true
        }
    }

    FocusScope {
        id: panel
        objectName: "alert"

        function focusCancel() {
            const button = buttons.itemAt(layer.alert ? layer.alert.cancelIndex() : 0);
            if (button)
                button.forceActiveFocus(Qt.OtherFocusReason);
        }

        anchors.centerIn: parent
        width: 270
        height: buttonRow.y + buttonRow.height
        opacity: layer.shown
        scale: fadeOut.running ? 1 : 1.2 - 0.2 * layer.shown
        Keys.onEscapePressed: layer.alert.choose(layer.alert.cancelIndex())
        Keys.onLeftPressed: nextItemInFocusChain(false).forceActiveFocus(Qt.BacktabFocusReason)
        Keys.onRightPressed: nextItemInFocusChain(true).forceActiveFocus(Qt.TabFocusReason)

        Accessible.role: Accessible.AlertMessage
        Accessible.name: layer.alert ? layer.alert.title : ""
        Accessible.description: layer.alert ? layer.alert.message : ""

        Rectangle {
            anchors.fill: parent
            radius: 14
            color: Theme.alert
        }

        Text {
            id: title
            objectName: "alertTitle"
            x: 16
            y: 19
            width: parent.width - 32
            horizontalAlignment: Text.AlignHCenter
            wrapMode: Text.Wrap
            text: layer.alert ? layer.alert.title : ""
            color: Theme.label
            font.pixelSize: 17
            font.weight: Font.DemiBold
        }

        Text {
            id: message
            objectName: "alertMessage"
            x: 16
            y: title.y + title.height + 3
            width: parent.width - 32
            horizontalAlignment: Text.AlignHCenter
            wrapMode: Text.Wrap
            text: layer.alert ? layer.alert.message : ""
            color: Theme.label
            font.pixelSize: 13
        }

        Rectangle {
            y: buttonRow.y
            width: parent.width
            height: 1 / Screen.devicePixelRatio
            color: Theme.separator
        }

        Row {
            id: buttonRow
            y: message.y + message.height + 20
            width: parent.width
            height: 44

            Repeater {
                id: buttons
                model: layer.alert ? layer.alert.actionCount : 0

                TextButton {
                    id: action
                    required property int index

                    objectName: "alertAction" + index
                    width: buttonRow.width / Math.max(1, buttons.count)
                    height: 44
                    groundRadius: 8
                    text: layer.alert.actionTitle(index)
                    textColor: layer.alert.isDestructive(index) ? Theme.systemRed
                                                                : Theme.systemBlue
                    weight: layer.alert.isCancel(index) || buttons.count === 1 ? Font.DemiBold
                                                                               : Font.Normal
                    onClicked: layer.alert.choose(index)

                    FocusRing {
                        anchors.margins: 3
                        shown: layer.screen.keyboardNavigation && action.activeFocus
                    }

                    Rectangle {
                        visible: action.index > 0
                        width: 1 / Screen.devicePixelRatio
                        height: parent.height
                        color: Theme.separator
                    }
                }
            }
        }
    }
}
