import QtQuick

// Shows where the keyboard is, once it is used to get there.
Rectangle {
    property Item of: parent

    anchors.fill: parent
    visible: of.activeFocus && view.byKeyboard
    color: "transparent"
    radius: theme.bubbleRadius - theme.space
    border.color: theme.accent
    border.width: theme.focusRing
}
