import QtQuick

// A link within a text, for the keyboard and for whoever hears the panel: the pointer finds the text's own.
Item {
    id: link

    required property TextEdit passage
    required property var target  // as PanelScene.linksIn() gives it
    required property Item list  // that the text is in

    signal reached

    readonly property rect first: at(target.start)
    readonly property rect last: at(target.end)

    // What it names moves when the text is laid out in another width.
    function at(position) {
        return passage.contentHeight >= 0 && passage.width >= 0 ? passage.positionToRectangle(position) : Qt.rect(0, 0, 0, 0)
    }

    // Where it leads is seen before it is followed.
    function follow() {
        if (target.words === target.url || address.isShown) verbs.openLink(target.url)
        else address.flash()
    }

    x: passage.x + first.x
    y: passage.y + first.y
    width: first.y === last.y ? last.x - first.x : passage.width - first.x
    height: first.height
    activeFocusOnTab: true
    // A list goes on giving the keyboard to what had it last.
    onActiveFocusChanged: {
        if (activeFocus) reached()
        else Qt.callLater(() => focus = activeFocus)
    }
    Accessible.role: Accessible.Link
    Accessible.name: target.words
    Accessible.description: target.url
    Accessible.focusable: true
    Accessible.onPressAction: verbs.openLink(target.url)

    Keys.onBacktabPressed: event => {
        event.accepted = nextItemInFocusChain(false) === list
        if (event.accepted) focus = false
    }
    Keys.onPressed: event => {
        if ([Qt.Key_Return, Qt.Key_Enter].includes(event.key) && !event.isAutoRepeat) {
            link.follow()
            event.accepted = true
        }
    }

    Hint {
        id: address
        text: link.target.url
        wanted: link.activeFocus && view.byKeyboard
    }

    FocusRing {
        anchors.margins: -theme.focusRing
        radius: theme.space
    }
}
