import QtQuick

// What to write or say to the program. Enter sends, Shift+Enter begins a line.
FocusScope {
    id: composer

    readonly property int mostLines: 5
    readonly property real padding: 3 * theme.space

    height: field.height + 2 * padding

    function send() {
        if (!verbs.send()) sendButton.showReason()
    }

    Rectangle {
        id: field

        x: composer.padding
        y: composer.padding
        width: parent.width - 2 * x
        height: flick.height + 4 * theme.space
        radius: theme.bubbleRadius
        color: theme.surfaceRaised
        border.color: view.recording || input.activeFocus ? theme.accent : theme.solidHairline
        border.width: input.activeFocus && view.byKeyboard ? theme.focusRing : 1

        Label {
            x: flick.x
            y: flick.y
            width: flick.width
            visible: input.text === "" && input.preeditText === "" && view.heard === ""
            text: view.recording ? view.words.listening : view.words.composer
            color: theme.textSecondary
        }

        Flickable {
            id: flick

            x: 3 * theme.space
            y: 2 * theme.space
            width: buttons.x - x - theme.space
            height: Math.min(contentHeight, composer.mostLines * input.lineAdvance)
            contentHeight: heard.visible ? heard.y + heard.height : input.contentHeight
            interactive: false
            clip: true

            function reveal(rectangle) {
                if (rectangle.y < contentY) contentY = rectangle.y
                else if (rectangle.y + rectangle.height > contentY + height)
                    contentY = rectangle.y + rectangle.height - height
            }

            TextEdit {
                id: input

                readonly property real lineAdvance: contentHeight / Math.max(1, lineCount)

                width: flick.width
                height: Math.max(contentHeight, flick.height)
                focus: true
                activeFocusOnTab: true
                selectByMouse: true
                textFormat: TextEdit.PlainText
                wrapMode: TextEdit.Wrap
                font.family: theme.textFont
                font.pixelSize: theme.fontBody
                color: theme.text
                selectionColor: theme.accent
                selectedTextColor: theme.onAccent
                onTextChanged: verbs.compose(text)
                onCursorRectangleChanged: flick.reveal(cursorRectangle)
                Accessible.role: Accessible.EditableText
                Accessible.name: view.words.composer
                Accessible.description: view.cannotSend
                Accessible.multiLine: true
                Keys.onPressed: event => {
                    const enter = event.key === Qt.Key_Return || event.key === Qt.Key_Enter
                    if (enter && !(event.modifiers & Qt.ShiftModifier)) {
                        if (!event.isAutoRepeat) composer.send()
                        event.accepted = true
                    } else if (event.key === Qt.Key_Tab) {
                        nextItemInFocusChain(true).forceActiveFocus(Qt.TabFocusReason)
                        event.accepted = true
                    } else if (event.key === Qt.Key_Backtab) {
                        nextItemInFocusChain(false).forceActiveFocus(Qt.BacktabFocusReason)
                        event.accepted = true
                    } else if (event.matches(StandardKey.Undo) && canUndo) {
                        undo()
                        event.accepted = true
                    }
                }

                readonly property string wanted: view.composerText

                onWantedChanged: {
                    if (wanted === text) return
                    text = wanted
                    cursorPosition = length
                }
            }

            // What is being understood, its end in sight.
            Label {
                id: heard

                y: input.text === "" && input.preeditText === "" ? 0 : input.contentHeight
                width: flick.width
                visible: view.heard !== ""
                wrapMode: Text.Wrap
                text: view.heard
                color: theme.textSecondary
                onHeightChanged: Qt.callLater(scroller.toEnd)
            }

            Scroller {
                id: scroller
                list: flick
            }
        }

        Row {
            id: buttons

            anchors.right: parent.right
            anchors.rightMargin: theme.space
            anchors.bottom: parent.bottom
            anchors.bottomMargin: Math.round((flick.y * 2 + theme.lineBody - mic.height) / 2)
            spacing: theme.space / 2

            PanelButton {
                glyph: "\uf379"
                ink: view.attaches ? theme.accent : theme.textSecondary
                visible: view.mayAttach
                name: view.screenLabel
                onActivated: verbs.perform("toggleScreen")
            }

            PanelButton {
                id: mic
                glyph: view.recording ? "\uf4db" : "\uf36c"
                ink: view.recording ? theme.accent : theme.textSecondary
                name: view.micLabel
                onActivated: verbs.perform("toggleMic")
            }

            PanelButton {
                id: sendButton
                glyph: "\uf48a"
                ink: available ? theme.accent : theme.textSecondary
                available: view.canSend
                name: view.words.send
                reason: view.cannotSend
                onActivated: composer.send()
            }
        }
    }
}
