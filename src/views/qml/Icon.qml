import QtQuick
import Dorix.Views

// The floating icon: the mark on a disc, in the middle of a transparent margin.
Item {
    id: icon

    required property var view

    signal pressed

    readonly property string look: view.look
    readonly property bool turns: look === "processing" && !theme.reducesMotion

    Accessible.role: Accessible.Button
    Accessible.name: view.tooltip
    Accessible.focusable: true
    Accessible.onPressAction: icon.pressed()

    Item {
        id: disc

        anchors.centerIn: parent
        width: view.glyph
        height: view.glyph
        Accessible.ignored: true

        Surface {
            radius: view.glyph / 2
        }

        IconMark {
            id: mark

            anchors.fill: parent
            color: icon.look === "paused" ? theme.textSecondary : theme.accent
            alert: theme.error
            body: icon.look === "paused" ? 0 : 1
            alarm: icon.look === "error" ? 1 : 0
            halo: icon.look === "listening" ? 1 : 0
            breath: theme.reducesMotion ? 0.5 : view.level
            arc: icon.look === "processing" ? 1 : 0

            Behavior on body { NumberAnimation { duration: theme.fadeBetween; easing.type: Easing.OutCubic } }
            Behavior on alarm { NumberAnimation { duration: theme.fadeBetween; easing.type: Easing.OutCubic } }
            Behavior on halo { NumberAnimation { duration: theme.fadeBetween; easing.type: Easing.OutCubic } }
            Behavior on arc { NumberAnimation { duration: theme.fadeBetween; easing.type: Easing.OutCubic } }

            NumberAnimation on angle {
                running: icon.turns && view.visible
                from: 0
                to: 360
                duration: theme.turn
                loops: Animation.Infinite
            }
        }
    }
}
