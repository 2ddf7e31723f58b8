import QtQuick
import Skavlo

BottomSheet {
    id: sheet

    objectName: "emojiSheet"
    open: screen.emojiSheet !== null
    title: screen.texts.chooseEmoji
    closeText: screen.texts.cancel
    contentHeight: 300
    firstFocus: grid

    GridView {
        id: grid
        objectName: "emojiGrid"
        anchors.fill: parent
        anchors.leftMargin: 12
        anchors.rightMargin: 12
        anchors.bottomMargin: 8
        clip: true
        cellWidth: width / Math.floor(width / 44)
        cellHeight: 44
        activeFocusOnTab: true
        keyNavigationEnabled: true
        model: sheet.screen.emojis
        Keys.onReturnPressed: sheet.screen.chooseEmoji(model[currentIndex])
        Keys.onEnterPressed: sheet.screen.chooseEmoji(model[currentIndex])
        Keys.onSpacePressed: sheet.screen.chooseEmoji(model[currentIndex])
        Accessible.role: Accessible.List
        Accessible.name: sheet.title

        delegate: Item {
            id: emoji
            required property string modelData
            required property int index

            objectName: "emoji"
            width: grid.cellWidth
            height: grid.cellHeight
            Accessible.role: Accessible.Button
            Accessible.name: modelData
            Accessible.focusable: true
            Accessible.onPressAction: sheet.screen.chooseEmoji(modelData)

            Text {
                anchors.centerIn: parent
                text: emoji.modelData
                color: Theme.label
                font.pixelSize: 28
            }

            MouseArea {
                anchors.fill: parent
                onClicked: sheet.screen.chooseEmoji(emoji.modelData)
            }

            FocusRing {
                anchors.margins: 1
                shown: sheet.screen.keyboardNavigation && grid.activeFocus
                       && emoji.GridView.isCurrentItem
            }
        }
    }
}
