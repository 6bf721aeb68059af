import QtQuick

// A text in the middle whose lines are of like length, so that no word stands alone on the last.
Label {
    id: label

    property real room

    readonly property real lines: Math.ceil(metrics.width / Math.max(1, room))

    width: lines > 1 ? Math.min(room, metrics.width / lines * 1.15) : room
    wrapMode: Text.Wrap
    horizontalAlignment: Text.AlignHCenter

    TextMetrics {
        id: metrics
        font: label.font
        text: label.text
    }
}
