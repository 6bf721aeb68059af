import QtQuick

// The icon's menu: rows of text, one of them current.
Item {
    id: menu

    required property var view

    signal activated(int row)

    Item {
        x: theme.shadowReach
        y: theme.shadowReach
        width: menu.width - 2 * theme.shadowReach
        height: menu.height - 2 * theme.shadowReach
        Accessible.role: Accessible.PopupMenu
        Accessible.name: "DORIX"

        Surface {}

        Repeater {
            model: view.rows

            Item {
                id: row

                required property int index
                required property var modelData

                readonly property bool current: view.current === index

                x: theme.space
                y: modelData.y
                width: parent.width - 2 * theme.space
                height: modelData.height
                Accessible.role: modelData.separator ? Accessible.Separator : Accessible.MenuItem
                Accessible.name: modelData.label
                Accessible.focusable: !modelData.separator
                Accessible.focused: current
                Accessible.onPressAction: menu.activated(index)

                Rectangle {
                    visible: row.modelData.separator
                    y: Math.floor(parent.height / 2)
                    width: parent.width
                    height: 1
                    color: theme.solidHairline
                }

                Rectangle {
                    anchors.fill: parent
                    visible: row.current
                    radius: theme.bubbleRadius - theme.space
                    color: theme.surfaceRaised
                    border.color: theme.accent
                    border.width: view.byKeyboard ? 2 : 0
                }

                Text {
                    x: 2 * theme.space
                    width: parent.width - 4 * theme.space
                    height: parent.height
                    visible: !row.modelData.separator
                    text: row.modelData.label
                    textFormat: Text.PlainText
                    verticalAlignment: Text.AlignVCenter
                    font.family: theme.textFont
                    font.pixelSize: theme.fontBody
                    color: theme.text
                    Accessible.ignored: true
                }
            }
        }
    }
}
