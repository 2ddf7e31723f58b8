import QtQuick
import Skavlo

// 20 by 20 points; turns by an eighth at a time.
Glyph {
    id: spinner

    property real turn: 0

    objectName: "spinner"
    width: 20
    height: 20
    sign: Glyph.Spokes
    color: Theme.gray
    rotation: Math.floor(turn) * 45

    NumberAnimation on turn {
        running: spinner.visible
        from: 0
        to: 8
        duration: 1000
        loops: Animation.Infinite
    }
}
