import QtQuick

// How far something has come.
Rectangle {
    id: bar

    property string name
    property real fraction: 0  // 0 to 1

    implicitHeight: theme.space
    radius: height / 2
    color: theme.track

    Accessible.role: Accessible.ProgressBar
    Accessible.name: name
    Accessible.description: Math.floor(bar.fraction * 100) + " %"

    Rectangle {
        width: Math.max(parent.height, Math.round(parent.width * Math.max(0, Math.min(1, bar.fraction))))
        height: parent.height
        radius: parent.radius
        color: theme.accent
    }
}
