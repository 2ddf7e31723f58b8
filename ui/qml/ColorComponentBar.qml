import QtQuick
import Skavlo

// One component of a colour: its name, its bar and its value.
Item {
    id: component

    property alias name: bar.name
    property alias fraction: bar.fraction
    property alias showFocus: bar.showFocus
    property color from
    property color to
    property bool percent: false
    signal moved(real value)

    height: 28

    Text {
        width: 68
        height: parent.height
        verticalAlignment: Text.AlignVCenter
        text: component.name
        color: Theme.label
        font.pixelSize: 15
        minimumPixelSize: 11
        fontSizeMode: Text.HorizontalFit
    }

    ValueBar {
        id: bar
        x: 72
        width: parent.width - 72 - 56
        checkered: component.percent
        onMoved: value => component.moved(value)
        gradient: Gradient {
            orientation: Gradient.Horizontal
            GradientStop { position: 0; color: component.from }
            GradientStop { position: 1; color: component.to }
        }
    }

    Text {
        anchors.right: parent.right
        width: 50
        height: parent.height
        horizontalAlignment: Text.AlignRight
        verticalAlignment: Text.AlignVCenter
        text: component.percent ? Math.round(component.fraction * 100) + "%"
                                : Math.round(component.fraction * 255)
        color: Theme.secondaryLabel
        font.pixelSize: 14
    }
}
