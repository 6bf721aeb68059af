import QtQuick

// A line of text to be filled in, with its name above it.
FocusScope {
    id: field

    property alias text: input.text
    property alias inputMethodHints: input.inputMethodHints
    property string name
    property bool isWrong: false

    signal accepted

    implicitHeight: label.height + theme.space + frame.height

    Label {
        id: label
        text: field.name
        color: theme.textSecondary
        font.pixelSize: theme.fontSmall
    }

    Rectangle {
        id: frame

        anchors.top: label.bottom
        anchors.topMargin: theme.space
        width: parent.width
        height: 9 * theme.space
        radius: theme.bubbleRadius - theme.space
        color: theme.surfaceRaised
        border.color: field.isWrong ? theme.error : input.activeFocus ? theme.accent : theme.solidHairline
        border.width: input.activeFocus ? theme.focusRing : 1

        TextInput {
            id: input

            anchors.left: parent.left
            anchors.right: parent.right
            anchors.margins: 3 * theme.space
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
            Accessible.role: Accessible.EditableText
            Accessible.name: field.name
            onAccepted: field.accepted()
        }

        HoverHandler {
            cursorShape: Qt.IBeamCursor
        }
    }
}
