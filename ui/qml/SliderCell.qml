import QtQuick
import Skavlo

// The five views of a slider row.
Item {
    id: sliderCell

    required property SliderControl control
    required property var texts
    required property bool showFocus
    readonly property Item focusTarget: slider

    Text {
        objectName: "sliderName"
        x: 18
        y: 11
        width: 92
        height: 22
        verticalAlignment: Text.AlignVCenter
        text: sliderCell.control.name
        color: Theme.label
        font.pixelSize: 15
        minimumPixelSize: 12
        fontSizeMode: Text.HorizontalFit
        elide: Text.ElideRight
    }

    TextButton {
        objectName: "minus"
        x: 110
        y: 7
        width: 30
        height: 30
        activeFocusOnTab: false // the slider's arrow keys do the same
        text: "-"
        name: sliderCell.texts.decrease + " " + sliderCell.control.name
        pixelSize: 22
        weight: Font.Bold
        onClicked: sliderCell.control.minus()
    }

    Slider {
        id: slider
        x: 140
        y: 7
        width: sliderCell.width - 220
        control: sliderCell.control
        showFocus: sliderCell.showFocus
    }

    TextButton {
        objectName: "plus"
        x: sliderCell.width - 80
        y: 7
        width: 30
        height: 30
        activeFocusOnTab: false
        text: "+"
        name: sliderCell.texts.increase + " " + sliderCell.control.name
        pixelSize: 22
        weight: Font.Bold
        onClicked: sliderCell.control.plus()
    }

    Text {
        objectName: "sliderValue"
        x: sliderCell.width - 50
        y: 11
        width: 40
        height: 22
        horizontalAlignment: Text.AlignRight
        verticalAlignment: Text.AlignVCenter
        text: sliderCell.control.valueText
        color: Theme.gray
        font.pixelSize: 14
    }
}
