import QtQuick
import QtQuick.Window
import Skavlo

Rectangle {
    id: root

    required property SettingsScreen screen
    readonly property bool modal: screen.alert !== null || screen.colorPicker !== null
                                  || screen.emojiSheet !== null || screen.fileList !== null
    readonly property Item focusItem: Window.activeFocusItem
    property Item focusBefore: null

    color: Theme.groupedBackground
    onFocusItemChanged: table.reveal(focusItem)
    onModalChanged: {
        if (modal)
            focusBefore = content.focused;
        content.enabled = !modal;
        if (!modal && focusBefore)
            focusBefore.forceActiveFocus(Qt.OtherFocusReason);
    }

    Binding {
        target: Theme
        property: "dark"
        value: root.screen.dark
    }

    FocusScope {
        id: content
        objectName: "content"

        // What had the focus when it was last within.
        property Item focused: null

        anchors.fill: parent
        focus: true
        opacity: root.screen.splash.contentAlpha

        Connections {
            target: root
            function onFocusItemChanged() {
                if (content.enabled && content.activeFocus)
                    content.focused = root.focusItem;
            }
        }

        SettingsTable {
            id: table
            anchors.fill: parent
            screen: root.screen
        }

        NavigationBar {
            width: parent.width
            screen: root.screen
            scrolled: table.scrolled
        }
    }

    Rectangle {
        objectName: "importing"
        anchors.centerIn: parent
        width: 80
        height: 80
        radius: 14
        visible: root.screen.importing
        color: Theme.alert
        border.width: 1
        border.color: Theme.separator
        Accessible.role: Accessible.Animation
        Accessible.name: root.screen.texts.busy

        Spinner {
            anchors.centerIn: parent
            scale: 1.6
        }
    }

    LazySheet {
        wanted: root.screen.colorPicker !== null
        sourceComponent: ColorSheet {
            screen: root.screen
        }
    }

    LazySheet {
        wanted: root.screen.emojiSheet !== null
        sourceComponent: EmojiSheet {
            screen: root.screen
        }
    }

    LazySheet {
        wanted: root.screen.fileList !== null
        sourceComponent: FileSheet {
            screen: root.screen
        }
    }

    AlertLayer {
        screen: root.screen
    }

    Splash {
        screen: root.screen
        playing: root.Window.visibility !== Window.Hidden
    }
}
