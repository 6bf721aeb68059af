import QtQuick

// What is known of the selected item, or the welcome. Only what is in sight is laid out, however long it is.
FocusScope {
    id: detail

    property bool narrow: false
    property real room: 0  // that the window's own buttons take at the right of the head

    signal key(var event)
    signal back

    Item {
        id: head

        width: parent.width
        height: theme.panelHeader

        MoveArea {}

        PanelButton {
            id: backButton
            x: 2 * theme.space
            anchors.verticalCenter: parent.verticalCenter
            width: visible ? implicitWidth : 0
            visible: detail.narrow && view.hasDetail
            glyph: "\uf04d"
            name: view.words.back
            onActivated: detail.back()
        }

        Column {
            anchors.left: backButton.right
            anchors.leftMargin: 2 * theme.space
            anchors.right: parent.right
            anchors.rightMargin: detail.room + 2 * theme.space
            anchors.verticalCenter: parent.verticalCenter
            visible: view.hasDetail

            Label {
                width: parent.width
                text: view.detailTitle
                font.weight: Font.Medium
            }

            Label {
                width: parent.width
                text: view.detailPlace
                font.pixelSize: theme.fontSmall
                color: theme.textSecondary
            }
        }
    }

    BlockList {
        id: blocks

        anchors.top: head.bottom
        width: parent.width
        height: parent.height - head.height - actions.height
        visible: view.hasDetail
        model: view.blocks
        Accessible.name: view.detailTitle
        onKey: event => detail.key(event)

        readonly property string shown: view.detailId

        onShownChanged: {
            Qt.callLater(blocks.scroller.toStart)
            // Not lost with a link of the text that was there before.
            if (detail.activeFocus) forceActiveFocus(Qt.OtherFocusReason)
        }

        FocusRing {
            parent: detail
            visible: blocks.Window.activeFocusItem === blocks && view.byKeyboard
            anchors.fill: blocks
            anchors.margins: 2
        }
    }

    Item {
        id: actions

        anchors.bottom: parent.bottom
        width: parent.width
        height: visible ? 14 * theme.space : 0
        visible: view.hasDetail

        Row {
            x: 4 * theme.space
            anchors.verticalCenter: parent.verticalCenter
            spacing: 2 * theme.space

            PanelOffers {
                model: view.detailOffers
            }
        }

        Row {
            anchors.right: parent.right
            anchors.rightMargin: 3 * theme.space
            anchors.verticalCenter: parent.verticalCenter
            spacing: theme.space / 2

            PanelOffers {
                model: view.detailEndOffers
            }
        }
    }

    PanelWelcome {
        id: welcome

        anchors.top: head.bottom
        width: parent.width
        height: parent.height - head.height
        visible: !view.hasDetail
    }

    FocusRing {
        of: welcome
        anchors.fill: welcome
        anchors.margins: 2
    }
}
