import QtQuick
import Dorix.Views

// An answer as it comes. The card stands in a window that is as high as it may become.
Item {
    id: window

    required property var view
    required property var verbs

    readonly property rect cardRect: Qt.rect(card.x, card.y, card.width, card.height)
    readonly property alias announcer: announcer
    property bool followsEnd: true

    signal cardMoved

    // What has come is in sight, unless the user has scrolled back to read.
    function followEnd() {
        blocks.forceLayout()
        if (followsEnd) blocks.toEnd()
    }

    // Heights that were guessed are known once it is laid out.
    function settle() {
        const end = Math.round(blocks.scroller.end)
        if (followsEnd && Math.abs(blocks.contentY - end) > 1) blocks.contentY = end
    }

    onCardRectChanged: cardMoved()

    Item {
        id: card

        readonly property bool holdsHints: true
        readonly property real around: head.height + foot.height
        readonly property real most: view.room.height
        readonly property real wanted: Math.ceil(around + body.height)

        x: view.room.x
        y: view.top < 0 ? view.room.y + view.room.height - height
         : Math.max(view.room.y, Math.min(view.top, view.room.y + view.room.height - height))
        width: view.room.width
        height: Math.min(most, wanted)
        opacity: view.shown || !theme.composited ? 1 : 0
        Accessible.role: Accessible.Pane
        Accessible.name: view.appName + ", " + view.kind

        Behavior on opacity {
            NumberAnimation {
                duration: view.shown ? theme.fadeIn : theme.fadeBetween
                easing.type: Easing.OutCubic
            }
        }

        Surface {
            radius: theme.cardRadius
        }

        Item {
            id: announcer

            Accessible.role: Accessible.Notification
            Accessible.name: view.spoken
            Accessible.ignored: view.spoken === ""
        }

        Item {
            id: head

            width: parent.width
            height: theme.panelHeader

            DragHandler {
                target: null
                onActiveChanged: active ? verbs.beginMove() : verbs.endMove()
                onActiveTranslationChanged: if (active) verbs.move()
            }

            Glyph {
                x: 4 * theme.space
                anchors.verticalCenter: parent.verticalCenter
                text: view.icon
                color: theme.textSecondary
            }

            Label {
                id: name

                x: 10 * theme.space
                width: Math.min(implicitWidth, corner.x - x - 2 * theme.space)
                anchors.verticalCenter: parent.verticalCenter
                text: view.appName
                font.weight: Font.Medium
            }

            Label {
                anchors.left: name.right
                anchors.leftMargin: 2 * theme.space
                anchors.right: corner.left
                anchors.rightMargin: 2 * theme.space
                anchors.baseline: name.baseline
                text: view.kind
                font.pixelSize: theme.fontSmall
                color: theme.textSecondary
            }

            Row {
                id: corner

                anchors.right: parent.right
                anchors.rightMargin: 2 * theme.space
                anchors.verticalCenter: parent.verticalCenter

                PanelOffers {
                    model: view.cornerOffers
                }
            }
        }

        Item {
            id: body

            // As high as the card may become, so that all that it can show is laid out; what of it the text
            // does not fill is not there.
            readonly property real room: card.most - card.around
            readonly property real text: blocks.contentHeight + blocks.topMargin + blocks.bottomMargin

            anchors.top: head.bottom
            width: parent.width
            height: Math.min(room, text)
            clip: true

            BlockList {
                id: blocks

                width: parent.width
                height: body.room
                topMargin: 0
                model: view.blocks
                onContentHeightChanged: Qt.callLater(window.settle)
                onOriginYChanged: Qt.callLater(window.settle)
                Accessible.name: view.appName
                onKey: event => event.accepted = verbs.press(event.key, event.modifiers)
                scroller.onMoved: window.followsEnd = contentY >= scroller.end - theme.lineBody
            }
        }

        FocusRing {
            of: blocks
            anchors.fill: body
            anchors.margins: 2
        }

        // That something goes on, and what can be done once it is over: so it keeps its height.
        Item {
            id: foot

            y: card.height - height
            width: parent.width
            height: 14 * theme.space

            Rectangle {
                x: 1
                width: parent.width - 2
                height: 1
                color: theme.solidHairline
            }

            TurningArc {
                x: 4 * theme.space
                anchors.verticalCenter: parent.verticalCenter
                width: theme.glyph
                height: theme.glyph
                visible: view.running
                color: theme.accent

                NumberAnimation on angle {
                    running: view.running && view.visible && !theme.reducesMotion
                    from: 0
                    to: 360
                    duration: theme.turn
                    loops: Animation.Infinite
                }
            }

            Label {
                x: (view.running ? 10 : 4) * theme.space
                width: ends.x - x - 2 * theme.space
                anchors.verticalCenter: parent.verticalCenter
                visible: view.waiting !== ""
                text: view.waiting
                color: theme.textSecondary
                Accessible.ignored: false
                Accessible.role: Accessible.StaticText
                Accessible.name: text
            }

            Row {
                x: 4 * theme.space
                anchors.verticalCenter: parent.verticalCenter
                spacing: 2 * theme.space

                PanelOffers {
                    model: view.offers
                }
            }

            Row {
                id: ends

                anchors.right: parent.right
                anchors.rightMargin: 4 * theme.space
                anchors.verticalCenter: parent.verticalCenter

                PanelOffers {
                    model: view.endOffers
                }
            }
        }
    }

    readonly property string shownCard: view.cardId

    onShownCardChanged: {
        followsEnd = true
        if (window.Window.active) blocks.forceActiveFocus(Qt.OtherFocusReason)
    }
}
