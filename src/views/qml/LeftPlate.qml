import QtQuick

// A surface that is rounded on its left side only, as the window is.
Item {
    id: plate

    property alias color: body.color
    property real radius: 0

    clip: true

    Rectangle {
        id: body
        width: plate.width + plate.radius
        height: plate.height
        radius: plate.radius
    }
}
