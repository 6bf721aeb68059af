import QtQuick

// What an answer rests on. One that leads somewhere is a button, and says where to before it is pressed.
FocusScope {
    id: chip

    property string title
    property string address
    property string numbers  // by which the answer cites it
    property real room  // that its row has

    readonly property bool leads: address !== ""

    signal activated
    // The keyboard has come to it.
    signal reached

    implicitWidth: Math.min(room, content.implicitWidth + 4 * theme.space)
    implicitHeight: 7 * theme.space
    activeFocusOnTab: leads
    onActiveFocusChanged: if (activeFocus) reached()

    Accessible.role: leads ? Accessible.Button : Accessible.StaticText
    Accessible.name: title
    Accessible.description: address
    Accessible.focusable: leads
    Accessible.onPressAction: if (chip.leads) chip.activated()

    Keys.onPressed: event => {
        if (chip.leads && [Qt.Key_Return, Qt.Key_Enter, Qt.Key_Space].includes(event.key) && !event.isAutoRepeat) {
            chip.activated()
            event.accepted = true
        }
    }

    Rectangle {
        anchors.fill: parent
        radius: height / 2
        color: chip.leads && (hover.hovered || tap.pressed) ? theme.track : theme.surfaceRaised
        border.color: theme.solidHairline
        border.width: chip.leads ? 1 : 0
    }

    Row {
        id: content

        x: 2 * theme.space
        anchors.verticalCenter: parent.verticalCenter
        spacing: theme.space

        Glyph {
            anchors.verticalCenter: parent.verticalCenter
            text: chip.address.startsWith("http") ? "\uf59f" : "\uf219"
            font.pixelSize: theme.fontBody
            color: theme.textSecondary
        }

        Label {
            anchors.verticalCenter: parent.verticalCenter
            width: Math.min(implicitWidth, chip.room - theme.glyph - 5 * theme.space)
            text: chip.numbers === "" ? chip.title : chip.numbers + " · " + chip.title
            font.pixelSize: theme.fontSmall
            color: chip.leads ? theme.text : theme.textSecondary
        }
    }

    FocusRing {
        radius: height / 2
    }

    HoverHandler {
        id: hover
        cursorShape: chip.leads ? Qt.PointingHandCursor : Qt.ArrowCursor
    }

    TapHandler {
        id: tap
        enabled: chip.leads
        gesturePolicy: TapHandler.ReleaseWithinBounds
        onTapped: chip.activated()
    }

    Hint {
        text: chip.address
        wanted: chip.leads && (hover.hovered && !tap.pressed || chip.activeFocus && view.byKeyboard)
    }
}
