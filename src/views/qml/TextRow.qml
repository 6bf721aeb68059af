import QtQuick

// A text of the user's. `edited` tells of every change, `committed` when they are through with it.
FocusScope {
    id: row

    property string label
    property string description
    property string status
    property string tone: "plain"
    property string text
    property string example  // shown while nothing stands there
    property bool secret: false
    property int lines: 1

    signal edited(string text)
    signal committed(string text)

    implicitHeight: words.height + 1.5 * theme.space + frame.height

    FormText {
        id: words

        width: parent.width
        label: row.label
        description: row.description
        status: row.status
        tone: row.tone
    }

    Rectangle {
        id: frame

        anchors.top: words.bottom
        anchors.topMargin: 1.5 * theme.space
        width: parent.width
        height: row.lines === 1 ? 9 * theme.space : row.lines * theme.lineBody + 4 * theme.space
        radius: theme.bubbleRadius - theme.space
        color: theme.surfaceRaised
        border.color: row.tone === "wrong" ? theme.error : row.activeFocus ? theme.accent : theme.solidHairline
        border.width: row.activeFocus ? theme.focusRing : 1

        Label {
            x: 3 * theme.space
            y: row.lines === 1 ? Math.round((parent.height - height) / 2) : 2 * theme.space
            width: parent.width - 2 * x
            visible: row.lines === 1 ? line.text === "" && line.preeditText === "" : area.text === "" && area.preeditText === ""
            text: row.example
            color: theme.textSecondary
        }

        TextInput {
            id: line

            x: 3 * theme.space
            width: parent.width - 2 * x
            anchors.verticalCenter: parent.verticalCenter
            visible: row.lines === 1
            focus: row.lines === 1
            activeFocusOnTab: visible
            clip: true
            selectByMouse: true
            echoMode: row.secret ? TextInput.Password : TextInput.Normal
            font.family: theme.textFont
            font.pixelSize: theme.fontBody
            color: theme.text
            selectionColor: theme.accent
            selectedTextColor: theme.onAccent
            Accessible.role: Accessible.EditableText
            Accessible.name: row.label
            Accessible.description: row.description
            Accessible.passwordEdit: row.secret
            onTextEdited: row.edited(text)
            // Also of a field that the keyboard has only come through, and whose text may not be the newest.
            onEditingFinished: if (text !== row.text) row.committed(text)

            Binding on text {
                value: row.text
                when: row.lines === 1
            }
        }

        Flickable {
            id: pane

            anchors.fill: parent
            anchors.margins: 2 * theme.space
            anchors.leftMargin: 3 * theme.space
            anchors.rightMargin: 3 * theme.space
            visible: row.lines > 1
            clip: true
            contentHeight: area.height
            interactive: false

            TextEdit {
                id: area

                width: pane.width
                height: Math.max(pane.height, implicitHeight)
                focus: row.lines > 1
                activeFocusOnTab: row.lines > 1
                wrapMode: TextEdit.Wrap
                textFormat: TextEdit.PlainText
                selectByMouse: true
                font.family: theme.textFont
                font.pixelSize: theme.fontBody
                color: theme.text
                selectionColor: theme.accent
                selectedTextColor: theme.onAccent
                Accessible.role: Accessible.EditableText
                Accessible.name: row.label
                Accessible.description: row.description
                Accessible.multiLine: true
                // Tab goes on to the next control, as everywhere in the form.
                Keys.onPressed: event => {
                    const back = event.key === Qt.Key_Backtab
                    if (event.key !== Qt.Key_Tab && !back) return
                    const next = area.nextItemInFocusChain(!back)
                    if (next) next.forceActiveFocus(back ? Qt.BacktabFocusReason : Qt.TabFocusReason)
                    event.accepted = true
                }
                onTextChanged: if (activeFocus) row.edited(text)
                onActiveFocusChanged: if (!activeFocus) row.committed(text)
                onCursorRectangleChanged: {
                    const at = cursorRectangle
                    if (at.y < pane.contentY) pane.contentY = at.y
                    else if (at.y + at.height > pane.contentY + pane.height) pane.contentY = at.y + at.height - pane.height
                }

                Binding on text {
                    value: row.text
                    when: row.lines > 1
                }
            }
        }

        HoverHandler {
            cursorShape: Qt.IBeamCursor
        }
    }
}
