import QtQuick
import Skavlo

Item {
    id: header

    required property SettingsScreen screen

    objectName: "header"
    height: 140

    RoundedImage {
        objectName: "headerIcon"
        x: 20
        y: 8
        width: 36
        height: 36
        cornerRadius: 8
        path: header.screen.iconPath
        tintColor: Theme.systemGray
    }

    Text {
        objectName: "headerTitle"
        x: 66
        y: 6
        width: header.width - 20 - 46
        height: 40
        verticalAlignment: Text.AlignVCenter
        text: "Skavlo"
        color: Theme.label
        font.pixelSize: 34
        font.weight: Font.Bold
        Accessible.role: Accessible.Heading
        Accessible.name: text
    }

    TextButton {
        objectName: "languageButton"
        x: header.width - 20 - 70
        y: 12
        width: 70
        height: 28
        groundRadius: 14
        ground: Theme.tertiarySystemFill
        text: header.screen.languageButtonTitle
        name: header.screen.texts.language + ": " + text
        textColor: Theme.label
        pixelSize: 13
        weight: Font.Medium
        showFocus: header.screen.keyboardNavigation
        onClicked: header.screen.toggleLanguage()
    }

    TextButton {
        objectName: "infoButton"
        x: header.width - 20 - 70
        y: 52
        width: 70
        height: 28
        groundRadius: 14
        ground: Theme.tertiarySystemFill
        name: header.screen.texts.info
        showFocus: header.screen.keyboardNavigation
        onClicked: header.screen.showInfo()

        Glyph {
            anchors.centerIn: parent
            width: 20
            height: 20
            sign: Glyph.Questionmark
            color: Theme.label
        }
    }

    TextEdit {
        id: about
        objectName: "about"
        x: 20
        y: 54
        width: header.width - 40 - 75
        height: 80
        readOnly: true
        selectByMouse: true
        activeFocusOnPress: false
        textFormat: TextEdit.RichText
        wrapMode: TextEdit.Wrap
        text: "<style>a { color: " + Theme.systemBlue + " }</style>" + header.screen.aboutHtml
        color: Theme.secondaryLabel
        selectionColor: Theme.systemBlue
        font.pixelSize: 14
        font.weight: Font.Medium
        onLinkActivated: header.screen.openChannel()
        Accessible.role: Accessible.StaticText
        Accessible.name: header.screen.aboutText

        HoverHandler {
            cursorShape: about.hoveredLink !== "" ? Qt.PointingHandCursor : Qt.ArrowCursor
        }

        // The link's line, for those who do not point.
        Item {
            objectName: "aboutLink"
            y: 2 * metrics.lineSpacing
            width: parent.width
            height: metrics.lineSpacing
            activeFocusOnTab: true
            Keys.onReturnPressed: header.screen.openChannel()
            Keys.onEnterPressed: header.screen.openChannel()
            Keys.onSpacePressed: header.screen.openChannel()
            Accessible.role: Accessible.Link
            Accessible.name: header.screen.channel
            Accessible.focusable: true
            Accessible.onPressAction: header.screen.openChannel()

            FocusRing {
                anchors.margins: -1
                radius: 4
                shown: header.screen.keyboardNavigation && parent.activeFocus
            }
        }
    }

    FontMetrics {
        id: metrics
        font: about.font
    }
}
