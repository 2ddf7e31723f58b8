pragma Singleton
import QtQuick

// The platform's public colours in their light and dark form.
QtObject {
    property bool dark: false

    readonly property color label: dark ? "#FFFFFF" : "#000000"
    readonly property color secondaryLabel: dark ? "#99EBEBF5" : "#993C3C43"
    readonly property color systemGreen: dark ? "#30D158" : "#34C759"
    readonly property color systemRed: dark ? "#FF453A" : "#FF3B30"
    readonly property color systemBlue: dark ? "#0A84FF" : "#007AFF"
    readonly property color systemGray: "#8E8E93"
    readonly property color systemGray4: dark ? "#3A3A3C" : "#D1D1D6"
    readonly property color systemGray5: dark ? "#2C2C2E" : "#E5E5EA"
    readonly property color gray: "#808080"
    readonly property color systemFill: dark ? "#5C787880" : "#33787880"
    readonly property color tertiarySystemFill: dark ? "#3D767680" : "#1F767680"
    readonly property color separator: dark ? "#99545458" : "#4A3C3C43"
    readonly property color groupedBackground: dark ? "#000000" : "#F2F2F7"
    readonly property color cell: dark ? "#1C1C1E" : "#FFFFFF"
    // Of what lies above the table.
    readonly property color sheet: dark ? "#1C1C1E" : "#F2F2F7"
    readonly property color sheetField: dark ? "#2C2C2E" : "#FFFFFF"
    readonly property color alert: dark ? "#252527" : "#F6F6F8"
    readonly property color dim: dark ? "#7A000000" : "#33000000"

    readonly property int barHeight: 44
    readonly property int rowHeight: 44
    readonly property int radius: 10

    function mix(from: color, to: color, share: real): color {
        return Qt.rgba(from.r + (to.r - from.r) * share, from.g + (to.g - from.g) * share,
                       from.b + (to.b - from.b) * share, from.a + (to.a - from.a) * share);
    }
}
