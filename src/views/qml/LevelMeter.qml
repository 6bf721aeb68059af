import QtQuick

// How loud the microphone hears; with reduced motion in the strength of the colour alone.
Item {
    id: meter

    property string name
    property real level: 0  // 0 to 1

    readonly property int ticks: 24

    implicitHeight: 3 * theme.space
    Accessible.role: Accessible.Indicator
    Accessible.name: name

    Row {
        anchors.fill: parent
        spacing: theme.space / 2

        Repeater {
            model: meter.ticks

            Rectangle {
                required property int index

                readonly property bool lit: theme.reducesMotion || index < Math.round(meter.level * meter.ticks)

                width: (meter.width - (meter.ticks - 1) * theme.space / 2) / meter.ticks
                height: meter.height
                radius: 1
                color: lit ? theme.accent : theme.track
                opacity: theme.reducesMotion ? 0.2 + 0.8 * meter.level : 1
            }
        }
    }
}
