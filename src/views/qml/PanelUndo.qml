import QtQuick

// What was just deleted can be taken back for a while.
Rectangle {
    id: bar

    height: visible ? 12 * theme.space : 0
    visible: view.undoMessage !== ""
    color: theme.surface
    Accessible.role: Accessible.Notification
    Accessible.name: view.undoMessage

    Rectangle {
        x: 2 * theme.space
        y: theme.space
        width: parent.width - 2 * x
        height: parent.height - 3 * theme.space
        radius: theme.bubbleRadius - theme.space
        color: theme.track

        Label {
            x: 3 * theme.space
            width: button.x - x - theme.space
            height: parent.height
            verticalAlignment: Text.AlignVCenter
            text: view.undoMessage
        }

        PanelButton {
            id: button
            anchors.right: parent.right
            anchors.rightMargin: theme.space / 2
            anchors.verticalCenter: parent.verticalCenter
            quiet: true
            ink: theme.accent
            label: view.words.undo
            onActivated: verbs.perform("undo")
        }
    }
}
