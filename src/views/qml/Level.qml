import QtQuick

// The voice's level as four bars.
Item {
    id: meter

    property real level: 0

    width: theme.glyph
    height: theme.glyph
    opacity: theme.reducesMotion ? 0.5 + 0.5 * level : 1

    Repeater {
        model: [0.55, 1, 0.8, 0.45]

        Rectangle {
            required property int index
            required property real modelData

            readonly property real rise: theme.reducesMotion ? 0.5 : meter.level

            x: index * 4 + 0.5
            width: 3
            height: 3 + Math.round((meter.height - 3) * modelData * rise)
            y: Math.round((meter.height - height) / 2)
            radius: 1.5
            color: theme.accent
        }
    }
}
