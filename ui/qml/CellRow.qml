import QtQuick
import QtQuick.Window
import Skavlo

Item {
    id: row

    required property SettingsScreen screen
    required property SectionContent content
    required property Cell cell
    required property int index
    required property real inset
    readonly property bool first: index === 0
    readonly property bool last: index === content.cells.length - 1
    readonly property bool showFocus: screen.keyboardNavigation
    // The one item of the row that takes the keyboard.
    readonly property Item focusTarget: cell.slider ? sliderLoader.item.focusTarget
                                        : cell.emojiField ? accessory.item.focusTarget
                                        : cell.switchControl || cell.well ? accessory.item : row
    readonly property bool focused: focusTarget ? focusTarget.activeFocus : false

    objectName: "row"
    height: Theme.rowHeight
    activeFocusOnTab: cell.selectable
    Keys.onReturnPressed: cell.select()
    Keys.onEnterPressed: cell.select()
    Keys.onSpacePressed: cell.select()

    Accessible.ignored: !cell.selectable
    Accessible.role: index < 3 ? Accessible.RadioButton : Accessible.Button
    Accessible.name: cell.text
    Accessible.checkable: index < 3
    Accessible.checked: cell.checkmark
    Accessible.focusable: true
    Accessible.onPressAction: cell.select()

    Component.onCompleted: {
        if (content.focusedRow === index)
            focusTarget.forceActiveFocus(Qt.OtherFocusReason);
    }
    onFocusedChanged: {
        if (focused)
            content.focusedRow = index;
        else if (content.focusedRow === index && content.current)
            content.focusedRow = -1;
    }

    Item {
        anchors.fill: parent
        clip: true // to the part of the rounded ground that is this row's

        Rectangle {
            id: highlight
            objectName: "highlight"
            y: row.first ? 0 : -Theme.radius
            width: parent.width
            height: parent.height - y + (row.last ? 0 : Theme.radius)
            radius: Theme.radius
            color: Theme.systemGray4
            opacity: 0
        }
    }

    NumberAnimation {
        id: fade
        target: highlight
        property: "opacity"
        to: 0
        duration: 350
    }

    Connections {
        target: row.cell
        function onHighlightedChanged(animated: bool) {
            fade.stop();
            if (row.cell.highlighted)
                highlight.opacity = 1;
            else if (animated)
                fade.start();
            else
                highlight.opacity = 0;
        }
    }

    MouseArea {
        anchors.fill: parent
        onPressed: row.cell.press()
        onCanceled: row.cell.cancelPress()
        onReleased: {
            if (!containsMouse)
                row.cell.cancelPress();
        }
        onClicked: row.cell.select()
    }

    Text {
        objectName: "rowText"
        x: row.inset
        width: parent.width - row.inset - (row.cell.centered ? row.inset
                                           : accessory.width + row.inset + 8)
        height: parent.height
        verticalAlignment: Text.AlignVCenter
        horizontalAlignment: row.cell.centered ? Text.AlignHCenter : Text.AlignLeft
        text: row.cell.text
        color: row.cell.textColor === Cell.SystemRed ? Theme.systemRed
               : row.cell.textColor === Cell.SystemBlue ? Theme.systemBlue : Theme.label
        font.pixelSize: 17
        minimumPixelSize: 12
        fontSizeMode: Text.HorizontalFit
        elide: Text.ElideRight
    }

    Loader {
        id: accessory
        objectName: "accessory"
        anchors.right: parent.right
        anchors.rightMargin: row.inset
        anchors.verticalCenter: parent.verticalCenter
        sourceComponent: row.cell.switchControl ? switchComponent
                         : row.cell.well ? wellComponent
                         : row.cell.emojiField ? emojiComponent
                         : row.cell.thumbnail !== "" ? thumbnailComponent
                         : row.cell.checkmark ? checkmarkComponent : null
    }

    Loader {
        id: sliderLoader
        anchors.fill: parent
        sourceComponent: row.cell.slider ? sliderComponent : null
    }

    Rectangle {
        x: row.inset
        y: parent.height - height
        width: parent.width - x
        height: 1 / Screen.devicePixelRatio
        visible: !row.last
        color: Theme.separator
    }

    FocusRing {
        anchors.margins: 1
        shown: row.showFocus && row.activeFocus
    }

    Component {
        id: switchComponent
        FakeSwitch {
            control: row.cell.switchControl
            screen: row.screen
            name: row.cell.text
            showFocus: row.showFocus
        }
    }

    Component {
        id: wellComponent
        ColorWell {
            control: row.cell.well
            screen: row.screen
            name: row.cell.text
        }
    }

    Component {
        id: emojiComponent
        EmojiInput {
            control: row.cell.emojiField
            screen: row.screen
            name: row.cell.text
        }
    }

    Component {
        id: thumbnailComponent
        RoundedImage {
            objectName: "thumbnail"
            width: 30
            height: 30
            cornerRadius: 6
            screen: row.screen
            path: row.cell.thumbnail
            tintColor: "transparent"
        }
    }

    Component {
        id: checkmarkComponent
        Glyph {
            objectName: "checkmark"
            width: 18
            height: 18
            sign: Glyph.Checkmark
            color: Theme.systemBlue
        }
    }

    Component {
        id: sliderComponent
        SliderCell {
            control: row.cell.slider
            texts: row.screen.texts
            showFocus: row.showFocus
        }
    }
}
