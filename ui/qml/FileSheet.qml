import QtQuick
import QtQuick.Window
import Skavlo

// The list of image files for desktops that have no chooser of their own.
BottomSheet {
    id: sheet

    property FileList files: null

    function take() {
        if (screen.fileList)
            files = screen.fileList;
    }

    objectName: "fileSheet"
    open: screen.fileList !== null
    title: screen.texts.chooseImage
    closeText: screen.texts.cancel
    contentHeight: height
    firstFocus: list
    Component.onCompleted: take()

    Connections {
        target: sheet.screen
        function onSheetChanged() {
            sheet.take();
        }
    }

    Text {
        id: path
        objectName: "filePath"
        x: 16
        width: parent.width - 32
        height: 24
        text: sheet.files ? sheet.files.directory : ""
        color: Theme.secondaryLabel
        font.pixelSize: 13
        elide: Text.ElideLeft
    }

    ListView {
        id: list
        objectName: "fileListView"
        anchors.top: path.bottom
        anchors.bottom: parent.bottom
        width: parent.width
        clip: true
        activeFocusOnTab: true
        keyNavigationEnabled: true
        model: sheet.files
        Keys.onReturnPressed: sheet.files.choose(currentIndex)
        Keys.onEnterPressed: sheet.files.choose(currentIndex)
        Keys.onSpacePressed: sheet.files.choose(currentIndex)
        Keys.onPressed: event => {
            if (event.key !== Qt.Key_Backspace)
                return;
            sheet.files.enterParent();
            event.accepted = true;
        }
        Accessible.role: Accessible.List
        Accessible.name: path.text

        Connections {
            target: sheet.files
            function onDirectoryChanged() {
                list.currentIndex = 0;
                list.positionViewAtBeginning();
            }
        }

        delegate: Item {
            id: entry
            required property string name
            required property bool isDirectory
            required property int index
            readonly property bool isParent: name === ".."

            objectName: "fileEntry"
            width: list.width
            height: Theme.rowHeight
            Accessible.role: Accessible.ListItem
            Accessible.name: isParent ? sheet.screen.texts.parentFolder : name
            Accessible.focusable: true
            Accessible.onPressAction: sheet.files.choose(index)

            Rectangle {
                anchors.fill: parent
                color: area.pressed ? Theme.systemGray4 : "transparent"
            }

            Glyph {
                x: 16
                anchors.verticalCenter: parent.verticalCenter
                width: 22
                height: 22
                sign: entry.isParent ? Glyph.Up : entry.isDirectory ? Glyph.Folder : Glyph.Picture
                color: Theme.systemBlue
            }

            Text {
                x: 50
                width: parent.width - 66
                height: parent.height
                verticalAlignment: Text.AlignVCenter
                text: entry.isParent ? sheet.screen.texts.parentFolder : entry.name
                textFormat: Text.PlainText
                color: Theme.label
                font.pixelSize: 17
                elide: Text.ElideMiddle
            }

            Rectangle {
                x: 50
                y: parent.height - height
                width: parent.width - x
                height: 1 / Screen.devicePixelRatio
                color: Theme.separator
            }

            MouseArea {
                id: area
                anchors.fill: parent
                onClicked: sheet.files.choose(entry.index)
            }

            FocusRing {
                anchors.margins: 2
                shown: sheet.screen.keyboardNavigation && list.activeFocus
                       && entry.ListView.isCurrentItem
            }
        }
    }

    Text {
        anchors.centerIn: parent
        visible: sheet.files !== null && sheet.files.empty
        text: sheet.screen.texts.noImages
        color: Theme.secondaryLabel
        font.pixelSize: 15
    }
}
