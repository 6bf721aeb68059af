import QtQuick

// The search field. Keys that mean nothing in a line of text go on to the list.
FocusScope {
    id: search

    signal key(var event)

    function selectAll() {
        input.selectAll()
    }
    function type(text) {
        input.insert(input.cursorPosition, text)
    }

    Rectangle {
        id: field

        anchors.verticalCenter: parent.verticalCenter
        width: parent.width
        height: 8 * theme.space
        radius: theme.bubbleRadius - theme.space
        color: theme.surfaceRaised
        border.color: input.activeFocus ? theme.accent : theme.solidHairline
        border.width: input.activeFocus && view.byKeyboard ? theme.focusRing : 1

        Glyph {
            id: lens
            x: 2 * theme.space
            anchors.verticalCenter: parent.verticalCenter
            text: "\uf349"
            color: theme.textSecondary
        }

        Label {
            anchors.fill: input
            visible: input.text === "" && input.preeditText === ""
            text: view.words.search
            color: theme.textSecondary
        }

        TextInput {
            id: input

            anchors.left: lens.right
            anchors.leftMargin: 1.5 * theme.space
            anchors.right: clear.left
            anchors.verticalCenter: parent.verticalCenter
            focus: true
            activeFocusOnTab: true
            clip: true
            selectByMouse: true
            font.family: theme.textFont
            font.pixelSize: theme.fontBody
            color: theme.text
            selectionColor: theme.accent
            selectedTextColor: theme.onAccent
            onTextEdited: verbs.search(text)
            Accessible.role: Accessible.EditableText
            Accessible.name: view.words.search
            Accessible.searchEdit: true
            Keys.onPressed: event => {
                // With something selected, copying is the field's.
                if (event.matches(StandardKey.Copy) && selectedText !== "") return
                if (event.matches(StandardKey.Undo) && canUndo) return
                search.key(event)
            }

            Binding on text {
                value: view.query
            }
        }

        PanelButton {
            id: clear

            anchors.right: parent.right
            anchors.rightMargin: theme.space / 2
            anchors.verticalCenter: parent.verticalCenter
            width: visible ? implicitWidth - theme.space : 0
            height: implicitHeight - theme.space
            visible: input.text !== ""
            activeFocusOnTab: false
            glyph: "\uf156"
            ink: theme.textSecondary
            name: view.words.clear
            onActivated: {
                verbs.search("")
                input.forceActiveFocus()
            }
        }

        HoverHandler {
            cursorShape: Qt.IBeamCursor
        }
    }
}
