import QtQuick

// A sheet that is made when it is first wanted; most never are.
Loader {
    required property bool wanted

    anchors.fill: parent
    active: false
    onWantedChanged: if (wanted) active = true
}
