import QtQuick

// Scrolls a list with the wheel, a finger and a bar. A list's own dragging would take the pointer from texts
// that can be selected, and glides on long after the wheel stands still.
Item {
    id: scroller

    required property Flickable list

    // Of a form: it brings what the keyboard comes to into sight.
    property bool followsKeyboard: false

    readonly property real start: list.originY - list.topMargin
    readonly property real end: Math.max(start, list.originY + list.contentHeight + list.bottomMargin - list.height)
    readonly property bool needed: list.contentHeight > list.height + 1

    // Somebody has scrolled.
    signal moved

    function to(y) {
        list.contentY = Math.round(Math.max(start, Math.min(end, y)))
        moved()
    }
    function toStart() {
        to(start)
    }
    function toEnd() {
        to(end)
    }
    // Brings into sight what stands there in the list, by as little as that takes.
    function reveal(y, height) {
        if (y < list.contentY) to(y - theme.space)
        else if (y + height > list.contentY + list.height) to(y + height + theme.space - list.height)
    }
    function by(distance) {
        to(list.contentY + distance)
    }
    function showFocus() {
        const item = scroller.Window.activeFocusItem
        for (let at = item; at; at = at.parent) {
            if (at !== list.contentItem) continue
            reveal(item.mapToItem(at, 0, 0).y, item.height)
            return
        }
    }
    // A key that turns pages is taken.
    function turn(event) {
        const page = list.height - 2 * theme.lineBody
        if (event.key === Qt.Key_PageDown) by(page)
        else if (event.key === Qt.Key_PageUp) by(-page)
        else return
        event.accepted = true
    }

    parent: list
    anchors.fill: parent
    z: 1

    Connections {
        target: scroller.followsKeyboard ? scroller.Window.window : null
        function onActiveFocusItemChanged() {
            Qt.callLater(scroller.showFocus)
        }
    }

    WheelHandler {
        acceptedDevices: PointerDevice.AllDevices
        target: null
        onWheel: event => {
            const notch = 3 * theme.lineBody
            scroller.by(event.pixelDelta.y !== 0 ? -event.pixelDelta.y : -event.angleDelta.y / 120 * notch)
        }
    }

    DragHandler {
        property real from: 0

        acceptedDevices: PointerDevice.TouchScreen
        target: null
        onActiveChanged: if (active) from = scroller.list.contentY
        onActiveTranslationChanged: if (active) scroller.to(from - activeTranslation.y)
    }

    Rectangle {
        id: bar

        readonly property real span: scroller.end - scroller.start
        readonly property real room: scroller.height - 2 * theme.space

        anchors.right: parent.right
        anchors.rightMargin: 2
        y: theme.space + (span > 0 ? (room - height) * (scroller.list.contentY - scroller.start) / span : 0)
        width: 4
        height: Math.max(6 * theme.space, room * scroller.height / Math.max(1, scroller.list.contentHeight))
        radius: 2
        visible: scroller.needed
        color: theme.textSecondary
        opacity: grip.containsMouse || grip.pressed ? 0.7 : 0.3

        MouseArea {
            id: grip

            property real grabbedAt: 0

            anchors.fill: parent
            anchors.margins: -4
            hoverEnabled: true
            onPressed: mouse => grabbedAt = mouse.y
            onPositionChanged: mouse => {
                if (!pressed) return
                const moved = mouse.y - grabbedAt
                scroller.by(moved * bar.span / Math.max(1, bar.room - bar.height))
            }
        }
    }
}
