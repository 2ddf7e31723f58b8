import QtQuick
import Skavlo

Item {
    id: field

    required property EmojiFieldControl control
    required property SettingsScreen screen
    required property string name
    readonly property Item focusTarget: input

    width: 150
    height: 30

    TextInput {
        id: input
        objectName: "emojiField"
        anchors.fill: parent
        horizontalAlignment: TextInput.AlignRight
        verticalAlignment: TextInput.AlignVCenter
        clip: true
        activeFocusOnTab: true
        selectByMouse: true
        color: Theme.label
        selectionColor: Theme.systemBlue
        font.pixelSize: 17

        Accessible.role: Accessible.EditableText
        Accessible.name: field.name
        Accessible.editable: true
        Accessible.focusable: true

        Component.onCompleted: text = field.control.text
        onActiveFocusChanged: activeFocus ? field.control.begin() : field.control.end()
        onDisplayTextChanged: field.control.edit(displayText)
        onAccepted: field.control.end()
        Keys.onEscapePressed: field.control.end()
        Keys.onPressed: event => {
            if (event.key !== Qt.Key_Backspace || event.modifiers !== Qt.NoModifier
                    || selectedText !== "" || preeditText !== "")
                return;
            remove(field.control.characterBefore(text, cursorPosition), cursorPosition);
            event.accepted = true;
        }

        Connections {
            target: field.control
            function onChanged() {
                if (!field.control.editing)
                    input.text = field.control.text;
            }
            function onResigned() {
                input.focus = false;
            }
        }
    }

    TextButton {
        objectName: "emojiButton"
        x: -34
        width: 30
        height: 30
        name: field.screen.texts.chooseEmoji
        showFocus: field.screen.keyboardNavigation
        groundRadius: 15
        onClicked: field.screen.openEmojiSheet(field.control)

        Glyph {
            anchors.centerIn: parent
            width: 22
            height: 22
            sign: Glyph.Smile
            color: Theme.systemBlue
        }
    }

    FocusRing {
        anchors.rightMargin: -6
        shown: field.screen.keyboardNavigation && input.activeFocus
    }
}
