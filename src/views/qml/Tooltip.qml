import QtQuick

// What the icon says about itself when the pointer rests on it.
Item {
    id: tooltip

    required property var view

    Item {
        x: theme.shadowReach
        y: theme.shadowReach
        width: tooltip.width - 2 * theme.shadowReach
        height: tooltip.height - 2 * theme.shadowReach

        Surface {
            radius: 2 * theme.space
        }

        Text {
            anchors.centerIn: parent
            text: view.text
            textFormat: Text.PlainText
            font.family: theme.textFont
            font.pixelSize: theme.fontSmall
            color: theme.text
        }
    }
}
