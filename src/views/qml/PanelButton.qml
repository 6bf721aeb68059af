import QtQuick

// A button with a glyph, a text or both. With a glyph alone it says its name when the pointer rests on it.
FocusScope {
    id: button

    property string glyph
    property string label
    property string name: label
    property bool available: true
    property string reason  // why it is not available, for whoever tries it all the same
    property bool filled: false
    property bool quiet: label === ""
    property color ink: filled ? theme.onAccent : theme.text
    readonly property bool pressed: tap.pressed

    signal activated

    function showReason() {
        hint.flash()
    }

    implicitWidth: label === "" ? 8 * theme.space : content.width + 6 * theme.space
    implicitHeight: 8 * theme.space
    // Only what it is made of: a hint is to be read.
    readonly property real strength: available ? 1 : 0.4
    // With a reason to tell it can be come to.
    enabled: available || reason !== ""
    activeFocusOnTab: enabled && visible || activeFocus  // what hides with the focus passes it on

    Accessible.role: Accessible.Button
    Accessible.name: name
    Accessible.description: available ? "" : reason
    Accessible.focusable: enabled
    Accessible.onPressAction: button.activated()

    Keys.onPressed: event => {
        if ([Qt.Key_Return, Qt.Key_Enter, Qt.Key_Space].includes(event.key) && !event.isAutoRepeat) {
            button.activated()
            event.accepted = true
        }
    }

    Rectangle {
        anchors.fill: parent
        radius: theme.bubbleRadius - theme.space
        opacity: button.strength
        color: button.filled ? theme.accent : button.available && (hover.hovered || tap.pressed) ? theme.track : "transparent"
        border.color: theme.solidHairline
        border.width: button.quiet || button.filled ? 0 : 1
    }

    Rectangle {
        anchors.fill: parent
        visible: button.filled && button.available && (hover.hovered || tap.pressed)
        radius: theme.bubbleRadius - theme.space
        color: theme.onAccent
        opacity: 0.12
    }

    Row {
        id: content

        anchors.centerIn: parent
        spacing: 1.5 * theme.space
        opacity: button.strength

        Glyph {
            anchors.verticalCenter: parent.verticalCenter
            visible: button.glyph !== ""
            text: button.glyph
            color: button.ink
        }

        Label {
            anchors.verticalCenter: parent.verticalCenter
            visible: button.label !== ""
            text: button.label
            color: button.ink
            font.weight: button.filled ? Font.Medium : Font.Normal
        }
    }

    FocusRing {
        anchors.margins: button.filled ? -2 * theme.focusRing : 0
        radius: theme.bubbleRadius - theme.space + (button.filled ? 2 * theme.focusRing : 0)
    }

    HoverHandler {
        id: hover
    }

    TapHandler {
        id: tap
        gesturePolicy: TapHandler.ReleaseWithinBounds
        onTapped: button.activated()
    }

    Hint {
        id: hint
        text: !button.available && button.reason !== "" ? button.reason : button.label === "" ? button.name : ""
        wanted: hover.hovered && !tap.pressed
    }
}
