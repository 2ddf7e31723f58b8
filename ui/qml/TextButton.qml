import QtQuick
import Skavlo

// A button that is nothing but its title and, perhaps, a ground.
Item {
    id: button

    property string text
    property string name: text
    property color textColor: Theme.systemBlue
    property color ground: "transparent"
    property int groundRadius: 0
    property int pixelSize: 17
    property int weight: Font.Normal
    property bool showFocus: false
    default property alias face: faceItem.data
    signal clicked

    activeFocusOnTab: true
    Keys.onSpacePressed: clicked()
    Keys.onReturnPressed: clicked()
    Keys.onEnterPressed: clicked()

    Accessible.role: Accessible.Button
    Accessible.name: name
    Accessible.focusable: true
    Accessible.onPressAction: clicked()

    Rectangle {
        objectName: "buttonGround"
        anchors.fill: parent
        radius: button.groundRadius
        color: button.ground
    }

    Text {
        objectName: "buttonText"
        anchors.fill: parent
        horizontalAlignment: Text.AlignHCenter
        verticalAlignment: Text.AlignVCenter
        opacity: area.pressed ? 0.3 : 1
        text: button.text
        color: button.textColor
        font.pixelSize: button.pixelSize
        font.weight: button.weight
        elide: Text.ElideRight
    }

    Item {
        id: faceItem
        anchors.fill: parent
        opacity: area.pressed ? 0.3 : 1
    }

    MouseArea {
        id: area
        anchors.fill: parent
        onClicked: button.clicked()
    }

    FocusRing {
        shown: button.showFocus && button.activeFocus
        radius: button.groundRadius + 3
    }
}
