import QtQuick

// The settings: pages at the side, the rows of one of them, and a search through all.
FocusScope {
    id: settings

    required property var view
    required property var verbs

    focus: true

    function focusFirst() {
        sidebar.forceActiveFocus(Qt.OtherFocusReason)
    }
    function scrollToStart() {
        scroller.toStart()
    }
    function goBy(step) {
        verbs.chooseSection(Math.max(0, Math.min(view.sections.length - 1, view.section + step)))
    }

    Keys.onPressed: event => {
        const control = event.modifiers & Qt.ControlModifier
        if (control && event.key === Qt.Key_F) {
            search.forceActiveFocus(Qt.ShortcutFocusReason)
            search.selectAll()
        } else if (control && event.key === Qt.Key_PageDown) settings.goBy(1)
        else if (control && event.key === Qt.Key_PageUp) settings.goBy(-1)
        else return scroller.turn(event)
        event.accepted = true
    }

    Item {
        id: card

        x: theme.shadowReach
        y: theme.shadowReach
        width: settings.width - 2 * theme.shadowReach
        height: settings.height - 2 * theme.shadowReach
        Accessible.role: Accessible.Dialog
        Accessible.name: view.words.title

        Surface {
            radius: theme.cardRadius
        }

        PanelSidebar {
            id: sidebar

            x: 1
            y: 1
            width: (narrow ? theme.narrowSidebar : theme.sidebar) - 1
            height: parent.height - 2
            narrow: card.width < 140 * theme.space
            onKey: event => {
                if (event.key === Qt.Key_Down) settings.goBy(1)
                else if (event.key === Qt.Key_Up) settings.goBy(-1)
                else if (event.key === Qt.Key_Home) verbs.chooseSection(0)
                else if (event.key === Qt.Key_End) verbs.chooseSection(view.sections.length - 1)
                else return
                event.accepted = true
                Qt.callLater(sidebar.tell)
            }
        }

        Item {
            id: head

            x: sidebar.x + sidebar.width + 6 * theme.space
            width: parent.width - x
            height: theme.panelHeader

            MoveArea {}

            PanelSearch {
                id: search

                anchors.verticalCenter: parent.verticalCenter
                width: parent.width - close.width - 6 * theme.space
                height: 8 * theme.space
                onKey: event => event.accepted = false
            }

            PanelButton {
                id: close

                anchors.right: parent.right
                anchors.rightMargin: 2 * theme.space
                anchors.verticalCenter: parent.verticalCenter
                glyph: "\uf156"
                ink: theme.textSecondary
                name: view.words.close
                onActivated: settings.verbs.closeWindow()
            }
        }

        Flickable {
            id: page

            anchors.left: head.left
            anchors.right: parent.right
            anchors.top: head.bottom
            anchors.bottom: parent.bottom
            anchors.bottomMargin: 1
            interactive: false
            clip: true
            contentHeight: rows.height + 6 * theme.space

            Column {
                id: rows

                width: page.width - 6 * theme.space

                Repeater {
                    model: view.rows

                    SettingsEntry {
                        width: rows.width
                    }
                }
            }

            Scroller {
                id: scroller
                list: page
                followsKeyboard: true
            }
        }

        Label {
            anchors.left: head.left
            anchors.right: parent.right
            anchors.rightMargin: 6 * theme.space
            anchors.top: head.bottom
            anchors.topMargin: 4 * theme.space
            visible: text !== ""
            text: view.nothing
            wrapMode: Text.Wrap
            color: theme.textSecondary
            Accessible.ignored: false
            Accessible.role: Accessible.StaticText
            Accessible.name: text
        }
    }
}
