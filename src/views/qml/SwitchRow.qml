import QtQuick

// Something that is on or off. All of the row takes the pointer.
FocusScope {
    id: row

    property string label
    property string description
    property string status
    property string tone: "plain"
    property bool on: false
    property bool available: true

    signal toggled(bool on)

    function toggle() {
        row.toggled(!row.on)
    }

    implicitHeight: Math.max(words.height, plate.height)
    enabled: available
    activeFocusOnTab: enabled && visible

    Accessible.role: Accessible.CheckBox
    Accessible.name: label
    Accessible.description: description
    Accessible.checkable: true
    Accessible.checked: on
    Accessible.focusable: enabled
    Accessible.onPressAction: row.toggle()
    Accessible.onToggleAction: row.toggle()

    Keys.onPressed: event => {
        if ([Qt.Key_Return, Qt.Key_Enter, Qt.Key_Space].includes(event.key)) {
            if (!event.isAutoRepeat) row.toggle()
            event.accepted = true
        }
    }

    FormText {
        id: words

        width: parent.width - plate.width - 4 * theme.space
        anchors.verticalCenter: parent.verticalCenter
        label: row.label
        description: row.description
        status: row.status
        tone: row.tone
    }

    Rectangle {
        id: plate

        anchors.right: parent.right
        anchors.verticalCenter: parent.verticalCenter
        width: 9 * theme.space
        height: 5 * theme.space
        radius: height / 2
        opacity: row.available ? 1 : 0.4
        color: row.on ? theme.accent : theme.track
        border.color: theme.textSecondary
        border.width: row.on ? 0 : 1

        Rectangle {
            x: row.on ? parent.width - width - 3 : 3
            anchors.verticalCenter: parent.verticalCenter
            width: parent.height - 6
            height: width
            radius: width / 2
            color: row.on ? theme.onAccent : theme.textSecondary

            Behavior on x {
                NumberAnimation {
                    duration: theme.motionBetween
                    easing.type: Easing.OutCubic
                }
            }
        }

        FocusRing {
            of: row
            anchors.margins: -2 * theme.focusRing
            radius: parent.radius + 2 * theme.focusRing
        }
    }

    TapHandler {
        gesturePolicy: TapHandler.ReleaseWithinBounds
        onTapped: {
            row.forceActiveFocus(Qt.MouseFocusReason)
            row.toggle()
        }
    }
}
