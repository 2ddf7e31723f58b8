import QtQuick
import Skavlo

Flickable {
    id: table

    required property SettingsScreen screen
    readonly property real scrolled: contentY + topMargin
    readonly property real inset: column.width < 375 ? 16 : 20

    // What the keyboard has reached is to be seen.
    function reveal(item: Item) {
        if (!item || !screen.keyboardNavigation)
            return;
        let ancestor = item;
        while (ancestor && ancestor !== column)
            ancestor = ancestor.parent;
        if (!ancestor)
            return;
        const top = item.mapToItem(column, 0, 0).y;
        const room = 12;
        const lowest = Math.max(-topMargin, contentHeight - height);
        if (top < header.height)
            contentY = -topMargin;
        else if (top - room < contentY + topMargin)
            contentY = top - room - topMargin;
        else if (top + item.height + room > contentY + height)
            contentY = Math.min(lowest, top + item.height + room - height);
    }

    objectName: "table"
    topMargin: Theme.barHeight
    contentWidth: width
    contentHeight: column.height
    onContentYChanged: screen.tableScrolled(topMargin, contentY)
    onContentHeightChanged: {
        if (!moving)
            returnToBounds();
    }

    Keys.onPressed: event => {
        if (event.key !== Qt.Key_PageDown && event.key !== Qt.Key_PageUp)
            return;
        const page = (height - topMargin) * (event.key === Qt.Key_PageDown ? 0.9 : -0.9);
        contentY = Math.max(-topMargin, Math.min(contentHeight - height, contentY + page));
        event.accepted = true;
    }

    Column {
        id: column
        objectName: "column"
        anchors.horizontalCenter: parent.horizontalCenter
        width: Math.min(table.width, 768)
        bottomPadding: 34

        Header {
            id: header
            width: column.width
            screen: table.screen
        }

        Repeater {
            model: table.screen.sections

            SectionView {
                required property Section modelData

                width: column.width
                screen: table.screen
                section: modelData
                inset: table.inset
            }
        }
    }
}
