import QtQuick

// The name of what the pointer rests on, below it and within the window.
Item {
    id: hint

    property string text
    property bool wanted: false
    readonly property bool isShown: bubble.visible

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

        // What of the window a hint may cover: all but its shadow, or the part of it that says so.
        function area() {
            for (let at = hint.parent; at; at = at.parent) {
                if (at.holdsHints) return at.mapToItem(null, 0, 0, at.width, at.height)
            }
            const window = hint.Window.window
            const reach = theme.shadowReach
            return Qt.rect(reach, reach, window.width - 2 * reach, window.height - 2 * reach)
        }

        function show() {
            const scene = hint.mapToItem(null, 0, 0)
            const room = area()
            const edge = theme.space
            label.width = Math.min(label.implicitWidth, room.width - 2 * edge - 4 * theme.space)
            const below = scene.y + hint.height + theme.space
            const left = scene.x + (hint.width - width) / 2
            x = Math.round(Math.max(room.x + edge, Math.min(left, room.x + room.width - width - edge)))
            const above = Math.max(room.y + edge, scene.y - height - theme.space)
            y = Math.round(below + height + edge > room.y + room.height ? above : below)
            visible = true
        }

        // Lists cut off what reaches beyond them.
        parent: hint.Window.contentItem
        z: 1
        visible: false
        Accessible.role: Accessible.Notification
        Accessible.name: hint.text
        Accessible.ignored: !flashed.running
        width: label.width + 4 * theme.space
        height: label.height + 2 * theme.space
        radius: theme.bubbleRadius - theme.space
        color: theme.text

        Label {
            id: label
            anchors.centerIn: parent
            wrapMode: Text.Wrap
            font.pixelSize: theme.fontSmall
            text: hint.text
            color: theme.surface
        }
    }
}
