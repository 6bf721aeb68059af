import QtQuick

// A line of the list: the name of a day, or an item.
Item {
    id: row

    required property int index
    required property bool isDay
    required property string day
    required property string title
    required property string subtitle
    required property string icon
    required property string spoken

    signal opened(point at)

    property bool focused: false
    readonly property bool current: view.selected === index && !isDay

    // A row that waits for its next use is no part of the list.
    ListView.onPooled: visible = false
    ListView.onReused: visible = true

    height: isDay ? theme.panelDay : theme.panelRow
    Accessible.role: isDay ? Accessible.Heading : Accessible.ListItem
    Accessible.name: spoken
    Accessible.selectable: !isDay
    Accessible.selected: current
    Accessible.focusable: !isDay
    Accessible.focused: current && focused
    Accessible.onPressAction: verbs.choose(index)

    Label {
        x: 4 * theme.space
        width: parent.width - 2 * x
        height: parent.height
        visible: row.isDay
        verticalAlignment: Text.AlignVCenter
        text: row.isDay ? row.day : ""
        font.pixelSize: theme.fontSmall
        font.weight: Font.Medium
        color: theme.textSecondary
    }

    Rectangle {
        x: 2 * theme.space
        width: parent.width - 2 * x
        height: parent.height
        visible: !row.isDay
        radius: theme.bubbleRadius - theme.space
        color: row.current ? theme.chosen : hover.hovered ? theme.surfaceRaised : "transparent"
        border.color: theme.accent
        border.width: row.current && row.focused && view.byKeyboard ? theme.focusRing : 0

        Glyph {
            x: 2 * theme.space
            y: 2 * theme.space + 1
            text: row.icon
            color: row.current ? theme.accent : theme.textSecondary
        }

        Label {
            id: heading
            x: 8 * theme.space
            y: 2 * theme.space
            width: parent.width - x - 2 * theme.space
            text: row.title
        }

        Label {
            x: heading.x
            anchors.top: heading.bottom
            anchors.topMargin: 1
            width: heading.width
            text: row.subtitle
            font.pixelSize: theme.fontSmall
            color: theme.textSecondary
        }

        HoverHandler {
            id: hover
        }

        TapHandler {
            onTapped: eventPoint => {
                verbs.choose(row.index)
                row.opened(eventPoint.scenePosition)
            }
            onDoubleTapped: verbs.perform("insert")
        }

        TapHandler {
            acceptedButtons: Qt.RightButton
            onTapped: eventPoint => {
                verbs.choose(row.index)
                verbs.showRowMenu(row.index, eventPoint.scenePosition.x, eventPoint.scenePosition.y)
            }
        }
    }
}
