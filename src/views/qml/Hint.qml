import QtQuick

// The name of what the pointer rests on, below it and within the window.
Item {
    id: hint

    property string text
    property bool wanted: false

    anchors.fill: parent
    z: 1

    // For who did not use the pointer.
    function flash() {
        bubble.show()
        flashed.restart()
    }

    onWantedChanged: bubble.visible = false

    Timer {
        id: flashed
        interval: theme.flashedHint
        onTriggered: bubble.visible = false
    }

    Timer {
        running: hint.wanted && hint.text !== ""
        interval: theme.restBeforeHint
        onTriggered: bubble.show()
    }

    Rectangle {
        id: bubble

        function show() {
            const scene = hint.mapToItem(null, 0, 0)
            const window = hint.Window.window
            const edge = theme.shadowReach + theme.space
            const above = scene.y + hint.height + height + edge > window.height
            const left = scene.x + (hint.width - width) / 2
            x = Math.round(Math.max(edge, Math.min(left, window.width - width - edge)) - scene.x)
            y = above ? -height - theme.space : hint.height + theme.space
            visible = true
        }

        visible: false
        Accessible.role: Accessible.Notification
        Accessible.name: hint.text
        Accessible.ignored: !flashed.running
        width: label.implicitWidth + 4 * theme.space
        height: label.implicitHeight + 2 * theme.space
        radius: theme.bubbleRadius - theme.space
        color: theme.text

        Label {
            id: label
            anchors.centerIn: parent
            font.pixelSize: theme.fontSmall
            text: hint.text
            color: theme.surface
        }
    }
}
