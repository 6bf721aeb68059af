import QtQuick

// Where the window can be taken and moved.
Item {
    anchors.fill: parent

    DragHandler {
        target: null
        acceptedDevices: PointerDevice.Mouse | PointerDevice.TouchPad | PointerDevice.Stylus
        onActiveChanged: if (active) verbs.moveWindow()
    }
}
