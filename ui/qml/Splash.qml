import QtQuick
import Skavlo

Item {
    id: splashView

    required property SettingsScreen screen
    readonly property SplashPlayer splash: screen.splash
    property bool playing: false

    objectName: "splash"
    anchors.fill: parent
    visible: !splash.removed
    opacity: splash.splashAlpha
    Accessible.role: Accessible.Animation
    Accessible.name: "Skavlo"

    NumberAnimation {
        target: splashView.splash
        property: "time"
        running: splashView.playing
        from: 0
        to: splashView.splash.seconds
        duration: splashView.splash.seconds * 1000
    }

    Rectangle {
        anchors.fill: parent
        gradient: Gradient {
            GradientStop { position: 0; color: Qt.rgba(143 / 255, 126 / 255, 166 / 255, 1) }
            GradientStop { position: 1; color: Qt.rgba(48 / 255, 42 / 255, 56 / 255, 1) }
        }
    }

    RoundedImage {
        objectName: "splashIcon"
        anchors.centerIn: parent
        width: 90
        height: 90
        cornerRadius: 20
        aspectFill: false
        path: splashView.screen.iconPath
        tintColor: Theme.label
        opacity: splashView.splash.iconAlpha
        scale: splashView.splash.iconScale
    }

    MouseArea {
        anchors.fill: parent
        onWheel: wheel => wheel.accepted = true
    }
}
