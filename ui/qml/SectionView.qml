import QtQuick
import Skavlo

// A section's header and its rows; those of before a reload fade out below the new ones.
Item {
    id: sectionView

    required property SettingsScreen screen
    required property Section section
    required property real inset

    objectName: "section"
    height: 40 + section.rowCount * Theme.rowHeight

    Text {
        objectName: "sectionHeader"
        x: sectionView.inset * 2
        y: 14
        width: parent.width - 2 * x
        height: 20
        verticalAlignment: Text.AlignVCenter
        text: sectionView.section.title
        color: Theme.secondaryLabel
        font.pixelSize: 13
        Accessible.role: Accessible.Heading
        Accessible.name: text
    }

    Rectangle {
        objectName: "card"
        x: sectionView.inset
        y: 40
        width: parent.width - 2 * x
        height: sectionView.section.rowCount * Theme.rowHeight
        radius: Theme.radius
        color: Theme.cell

        Repeater {
            model: sectionView.section

            Column {
                id: rows

                required property SectionContent content

                objectName: content.current ? "rows" : "oldRows"
                width: parent.width
                enabled: content.current
                visible: content.current || content.fades

                Component.onCompleted: {
                    if (content.fades)
                        fadeIn.start();
                }

                Connections {
                    target: rows.content
                    function onCurrentChanged() {
                        fadeIn.stop();
                        if (rows.content.fades)
                            fadeOut.start();
                    }
                }

                NumberAnimation {
                    id: fadeIn
                    target: rows
                    property: "opacity"
                    from: 0
                    to: 1
                    duration: 300
                }

                NumberAnimation {
                    id: fadeOut
                    target: rows
                    property: "opacity"
                    to: 0
                    duration: 300
                    onFinished: sectionView.section.dismiss(rows.content)
                }

                Repeater {
                    model: rows.content.cells

                    CellRow {
                        required property Cell modelData

                        width: rows.width
                        screen: sectionView.screen
                        content: rows.content
                        cell: modelData
                        inset: sectionView.inset
                    }
                }
            }
        }
    }
}
