import QtQuick
import QtQuick.Window
import Skavlo

// The dialog that the screen presents, above everything else.
Item {
    id: alertLayer // not "layer", which every item has as a property

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
        target: alertLayer.alert
        function onChosen() {
            fadeIn.stop();
            fadeOut.start();
        }
    }

    NumberAnimation {
        id: fadeIn
        target: alertLayer
        property: "shown"
        from: 0
        to: 1
        duration: 250
        easing.type: Easing.OutCubic
    }

    NumberAnimation {
        id: fadeOut
        target: alertLayer
        property: "shown"
        to: 0
        duration: 200
        onFinished: alertLayer.screen.alertDismissed()
    }

    Rectangle {
        anchors.fill: parent
        color: Theme.dim
        opacity: alertLayer.shown

        MouseArea {
            anchors.fill: parent
            onWheel: wheel => wheel.accepted = true
        }
    }

    FocusScope {
        id: panel
        objectName: "alert"

        function moveFocus(forward: bool) {
            const item = alertLayer.Window.activeFocusItem.nextItemInFocusChain(forward);
            item.forceActiveFocus(forward ? Qt.TabFocusReason : Qt.BacktabFocusReason);
        }
        function focusCancel() {
            const button = buttons.itemAt(alertLayer.alert ? alertLayer.alert.cancelIndex() : 0);
            if (button)
                button.forceActiveFocus(Qt.OtherFocusReason);
        }

        anchors.centerIn: parent
        width: 270
        height: buttonRow.y + buttonRow.height
        opacity: alertLayer.shown
        scale: fadeOut.running ? 1 : 1.2 - 0.2 * alertLayer.shown
        Keys.onEscapePressed: alertLayer.alert.choose(alertLayer.alert.cancelIndex())
        Keys.onLeftPressed: moveFocus(false)
        Keys.onRightPressed: moveFocus(true)

        Accessible.role: Accessible.AlertMessage
        Accessible.name: alertLayer.alert ? alertLayer.alert.title : ""
        Accessible.description: alertLayer.alert ? alertLayer.alert.message : ""

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
            text: alertLayer.alert ? alertLayer.alert.title : ""
            color: Theme.label
            font.pixelSize: 17
            font.weight: Font.Bold
        }

        Text {
            id: message
            objectName: "alertMessage"
            x: 16
            y: title.y + title.height + 3
            width: parent.width - 32
            horizontalAlignment: Text.AlignHCenter
            wrapMode: Text.Wrap
            text: alertLayer.alert ? alertLayer.alert.message : ""
            color: Theme.label
            font.pixelSize: 13
        }

        Rectangle {
            y: buttonRow.y
            width: parent.width
            height: 1 / Screen.devicePixelRatio
            color: Theme.separator
        }

        Item {
            id: buttonRow
            y: message.y + message.height + 20
            width: parent.width
            height: 44

            Repeater {
                id: buttons
                model: alertLayer.alert ? alertLayer.alert.actionCount : 0

                TextButton {
                    id: action
                    required property int index

                    objectName: "alertAction" + index
                    x: index * width
                    width: buttonRow.width / Math.max(1, buttons.count)
                    height: 44
                    groundRadius: 8
                    text: alertLayer.alert.actionTitle(index)
                    textColor: alertLayer.alert.isDestructive(index) ? Theme.systemRed
                                                                : Theme.systemBlue
                    weight: alertLayer.alert.isCancel(index) || buttons.count === 1 ? Font.Bold
                                                                               : Font.Normal
                    onClicked: alertLayer.alert.choose(index)
                    Component.onCompleted: {
                        if (index === alertLayer.alert.cancelIndex())
                            forceActiveFocus(Qt.OtherFocusReason);
                    }

                    FocusRing {
                        anchors.margins: 3
                        shown: alertLayer.screen.keyboardNavigation && action.activeFocus
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
