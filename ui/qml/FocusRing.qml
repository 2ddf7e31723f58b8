import QtQuick
import Skavlo

// Around what has the focus, for those who move it with the keyboard.
Rectangle {
    required property bool shown

    anchors.fill: parent
    anchors.margins: -3
    visible: shown
    color: "transparent"
    border.width: 3
    border.color: Theme.systemBlue
    radius: 8
}
