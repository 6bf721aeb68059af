import QtQuick

// An answer in pieces. Only what is in sight is laid out, however long it is.
ListView {
    id: blocks

    readonly property alias scroller: scroller

    // Before it means anything here.
    signal key(var event)

    // Down to the margin; what is not laid out is no more than guessed until the list has come there.
    function toEnd() {
        positionViewAtEnd()
        contentY = Math.round(scroller.end)
    }

    focus: true
    activeFocusOnTab: true
    interactive: false
    clip: true
    cacheBuffer: 200
    topMargin: 2 * theme.space
    bottomMargin: 4 * theme.space
    keyNavigationEnabled: false
    currentIndex: -1
    Accessible.role: Accessible.Document
    Accessible.focusable: true

    delegate: PanelBlock {
        width: ListView.view.width
        onReached: (y, height) => scroller.reveal(y, height)
    }

    Keys.onPressed: event => {
        event.accepted = false
        blocks.key(event)
        if (event.accepted) return
        event.accepted = true
        if (event.key === Qt.Key_Down) scroller.by(3 * theme.lineBody)
        else if (event.key === Qt.Key_Up) scroller.by(-3 * theme.lineBody)
        else if (event.key === Qt.Key_PageDown || event.key === Qt.Key_Space) scroller.by(height - 2 * theme.lineBody)
        else if (event.key === Qt.Key_PageUp) scroller.by(2 * theme.lineBody - height)
        else if (event.key === Qt.Key_Home) scroller.toStart()
        else if (event.key === Qt.Key_End) {
            toEnd()
            scroller.moved()
        } else event.accepted = false
    }

    Scroller {
        id: scroller
        list: blocks
    }
}
