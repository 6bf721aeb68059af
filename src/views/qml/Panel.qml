import QtQuick

// The history: sections, list, detail and composer. In a narrow window the detail takes the list's place.
Item {
    id: panel

    required property var view
    required property var verbs

    readonly property bool narrow: view.narrow
    readonly property bool detailShows: view.detailShows
    readonly property bool listShows: view.listShows

    function focusOn(target) {
        if (target === "search") verbs.perform("find")
        const item = target === "search" ? search : target === "composer" ? composer
                   : listShows ? list : detail
        item.forceActiveFocus(Qt.OtherFocusReason)
        Qt.callLater(list.reveal)
    }

    // What a key means in each part of the panel is no matter of drawing; these two need what is drawn.
    function press(area, event) {
        const before = [view.detailId, view.section]
        const verb = verbs.press(area, event.key, event.modifiers, event.isAutoRepeat)
        if (verb === "find") {
            search.forceActiveFocus(Qt.ShortcutFocusReason)
            search.selectAll()
        } else if (verb === "showItemMenu") {
            list.showMenu()
        } else if (verb === "back") {
            list.forceActiveFocus(Qt.BacktabFocusReason)
        }
        // Whoever hears the panel is at what was moved to, wherever the keyboard is.
        if (view.detailId !== before[0]) Qt.callLater(list.tell)
        if (view.section !== before[1]) Qt.callLater(sidebar.tell)
        if (verb !== "") event.accepted = true
        return verb !== ""
    }

    // What hides gives the keyboard to what takes its place.
    onListShowsChanged: {
        if (!listShows && (list.activeFocus || search.activeFocus)) detail.forceActiveFocus(Qt.OtherFocusReason)
        if (listShows && narrow && detail.activeFocus) list.forceActiveFocus(Qt.OtherFocusReason)
    }

    Keys.onPressed: event => panel.press("elsewhere", event)

    Item {
        id: card

        x: theme.shadowReach
        y: theme.shadowReach
        width: panel.width - 2 * theme.shadowReach
        height: panel.height - 2 * theme.shadowReach
        opacity: view.shown || !theme.composited ? 1 : 0
        Accessible.role: Accessible.Pane
        Accessible.name: view.words.title

        Behavior on opacity {
            NumberAnimation {
                duration: view.shown ? theme.fadeIn : theme.fadeBetween
                easing.type: Easing.OutCubic
            }
        }

        Surface {
            radius: theme.cardRadius
        }

        PanelSidebar {
            id: sidebar

            x: 1
            y: 1
            width: panel.narrow ? theme.narrowSidebar : theme.sidebar
            height: parent.height - 2
            narrow: panel.narrow
            onKey: event => panel.press("sections", event)
            KeyNavigation.tab: search
        }

        Item {
            id: listSide

            anchors.left: sidebar.right
            y: 1
            width: panel.narrow ? card.width - sidebar.width - 2 : Math.round((card.width - sidebar.width) * 0.43)
            height: foot.y - 1
            visible: panel.listShows

            PanelSearch {
                id: search

                x: 3 * theme.space
                width: parent.width - 2 * x - (panel.narrow ? corner.width + theme.space : 0)
                height: theme.panelHeader
                onKey: event => panel.press("search", event)
            }

            PanelList {
                id: list

                anchors.top: search.bottom
                width: parent.width
                height: parent.height - search.height - undo.height
                clip: true
                onTyped: text => {
                    search.forceActiveFocus(Qt.ShortcutFocusReason)
                    search.type(text)
                }
                onKey: event => panel.press("list", event)
                onOpened: at => {
                    panel.verbs.perform("openDetail")
                    if (panel.narrow) secondClick.expect(at)
                }
            }
        }

        // Under the list, or under the detail where that has taken its place.
        PanelUndo {
            id: undo

            x: listSide.x
            y: foot.y - height
            width: listSide.width
        }

        Rectangle {
            anchors.left: listSide.right
            y: 1
            width: 1
            height: listSide.height
            visible: !panel.narrow
            color: theme.solidHairline
        }

        PanelDetail {
            id: detail

            x: panel.narrow ? sidebar.width + 1 : listSide.x + listSide.width + 1
            y: 1
            width: card.width - x - 1
            height: listSide.height - (panel.narrow ? undo.height : 0)
            visible: panel.detailShows
            narrow: panel.narrow
            room: corner.width
            onKey: event => panel.press("detail", event)
            onBack: {
                panel.verbs.perform("back")
                list.forceActiveFocus(Qt.BacktabFocusReason)
            }
        }

        // The first click of two brings up the detail where it takes the list's place; the second one is meant for
        // the item all the same.
        MouseArea {
            id: secondClick

            readonly property real slip: 2 * theme.space

            function expect(at) {
                const place = card.mapFromItem(null, at.x, at.y)
                x = place.x - slip
                y = place.y - slip
                within.restart()
            }

            width: 2 * slip
            height: 2 * slip
            visible: within.running
            onPressed: panel.verbs.perform("insert")

            Timer {
                id: within
                interval: theme.secondClick
            }
        }

        Row {
            id: corner

            anchors.right: parent.right
            anchors.rightMargin: 2 * theme.space
            y: 1 + (theme.panelHeader - height) / 2
            spacing: theme.space / 2

            PanelButton {
                id: more
                glyph: "\uf1d8"
                ink: theme.textSecondary
                name: view.words.more
                onActivated: {
                    const corner = mapToItem(null, 0, height)
                    panel.verbs.showMenu(corner.x, corner.y)
                }
            }

            PanelOffers {
                model: view.cornerOffers
            }
        }

        Rectangle {
            id: foot

            anchors.left: sidebar.right
            anchors.right: parent.right
            anchors.rightMargin: 1
            y: parent.height - composer.height - 1
            height: 1
            color: theme.solidHairline
        }

        PanelComposer {
            id: composer

            anchors.left: sidebar.right
            anchors.right: parent.right
            anchors.bottom: parent.bottom
            anchors.rightMargin: 1
            anchors.bottomMargin: 1
        }
    }

    // The edges, to be taken and drawn.
    Repeater {
        model: [Qt.TopEdge, Qt.BottomEdge, Qt.LeftEdge, Qt.RightEdge, Qt.TopEdge | Qt.LeftEdge,
                Qt.TopEdge | Qt.RightEdge, Qt.BottomEdge | Qt.LeftEdge, Qt.BottomEdge | Qt.RightEdge]

        MouseArea {
            required property int modelData

            readonly property bool atLeft: modelData & Qt.LeftEdge
            readonly property bool atRight: modelData & Qt.RightEdge
            readonly property bool atTop: modelData & Qt.TopEdge
            readonly property bool atBottom: modelData & Qt.BottomEdge
            readonly property real grip: 1.5 * theme.space
            readonly property real from: theme.shadowReach - theme.space

            x: atRight ? panel.width - from - grip : atLeft ? from : from + grip
            y: atBottom ? panel.height - from - grip : atTop ? from : from + grip
            width: atLeft || atRight ? grip : panel.width - 2 * (from + grip)
            height: atTop || atBottom ? grip : panel.height - 2 * (from + grip)
            cursorShape: (atLeft && atTop) || (atRight && atBottom) ? Qt.SizeFDiagCursor
                       : (atLeft && atBottom) || (atRight && atTop) ? Qt.SizeBDiagCursor
                       : atLeft || atRight ? Qt.SizeHorCursor : Qt.SizeVerCursor
            onPressed: panel.verbs.resizeFrom(modelData)
        }
    }
}
