import QtQuick
import Dorix.Views

// The sections. One stop for the keyboard; up and down go through them.
FocusScope {
    id: sidebar

    property bool narrow: false

    signal key(var event)

    function tell() {
        verbs.tellFocus(tabs.itemAt(view.section))
    }

    activeFocusOnTab: true
    onActiveFocusChanged: if (activeFocus) Qt.callLater(sidebar.tell)
    Accessible.role: Accessible.PageTabList
    Accessible.name: view.words.sections
    Accessible.focusable: true

    Keys.onPressed: event => sidebar.key(event)

    LeftPlate {
        anchors.fill: parent
        color: theme.surfaceRaised
        radius: theme.cardRadius - 1
    }

    Rectangle {
        anchors.right: parent.right
        width: 1
        height: parent.height
        color: theme.solidHairline
    }

    // The head is where the window is taken to be moved.
    Item {
        width: parent.width
        height: theme.panelHeader

        IconMark {
            x: sidebar.narrow ? Math.round((parent.width - width) / 2) : 4 * theme.space
            anchors.verticalCenter: parent.verticalCenter
            width: 6 * theme.space
            height: 6 * theme.space
            color: theme.accent
            Accessible.ignored: true
        }

        Label {
            x: 11 * theme.space
            anchors.verticalCenter: parent.verticalCenter
            visible: !sidebar.narrow
            text: "DORIX"
            font.weight: Font.Medium
            font.pixelSize: theme.fontTitle
        }

        MoveArea {}
    }

    Column {
        y: theme.panelHeader
        x: 2 * theme.space
        width: parent.width - 2 * x
        spacing: theme.space / 2

        Repeater {
            id: tabs

            model: view.sections

            Item {
                id: section

                required property int index
                required property var modelData

                readonly property bool current: view.section === index

                width: parent.width
                height: 8 * theme.space
                Accessible.role: Accessible.PageTab
                Accessible.name: modelData.label
                Accessible.selectable: true
                Accessible.selected: current
                Accessible.focusable: true
                Accessible.focused: current && sidebar.activeFocus
                Accessible.onPressAction: verbs.chooseSection(index)

                Rectangle {
                    anchors.fill: parent
                    radius: theme.bubbleRadius - theme.space
                    color: section.current ? theme.chosen : hover.hovered ? theme.track : "transparent"
                    border.color: theme.accent
                    border.width: section.current && sidebar.activeFocus && view.byKeyboard ? theme.focusRing : 0
                }

                Glyph {
                    x: sidebar.narrow ? Math.round((parent.width - width) / 2) : 2 * theme.space
                    anchors.verticalCenter: parent.verticalCenter
                    text: section.modelData.glyph
                    color: section.current ? theme.accent : theme.textSecondary
                }

                Label {
                    x: 8 * theme.space
                    width: parent.width - x - theme.space
                    anchors.verticalCenter: parent.verticalCenter
                    visible: !sidebar.narrow
                    text: section.modelData.label
                    font.weight: section.current ? Font.Medium : Font.Normal
                }

                HoverHandler {
                    id: hover
                }

                TapHandler {
                    onTapped: verbs.chooseSection(section.index)
                }

                Hint {
                    text: sidebar.narrow ? section.modelData.label : ""
                    wanted: hover.hovered
                }
            }
        }
    }
}
