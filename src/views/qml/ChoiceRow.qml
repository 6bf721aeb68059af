import QtQuick

// One of a few. One stop for the keyboard; the arrows go through the options and choose as they go. Those with a note
// of their own stand below each other, others beside each other.
FocusScope {
    id: row

    property string label
    property string description
    property string status
    property string tone: "plain"
    property var options: []  // of `id`, `label`, `note`
    property string chosen

    readonly property bool noted: options.some(option => option.note !== "")
    readonly property int current: options.findIndex(option => option.id === chosen)

    signal picked(string id)

    function pick(index) {
        if (index >= 0 && index < options.length && index !== current) row.picked(options[index].id)
    }

    implicitHeight: words.height + 2 * theme.space + list.height
    activeFocusOnTab: visible || activeFocus  // what hides with the focus passes it on

    Accessible.role: Accessible.Grouping
    Accessible.name: label
    Accessible.description: description
    Accessible.focusable: true

    Keys.onPressed: event => {
        const count = row.options.length
        if ([Qt.Key_Down, Qt.Key_Right].includes(event.key)) row.pick(Math.min(count - 1, row.current + 1))
        else if ([Qt.Key_Up, Qt.Key_Left].includes(event.key)) row.pick(Math.max(0, row.current - 1))
        else if (event.key === Qt.Key_Home) row.pick(0)
        else if (event.key === Qt.Key_End) row.pick(count - 1)
        else return
        event.accepted = true
    }

    FormText {
        id: words

        width: parent.width
        label: row.label
        description: row.description
        status: row.status
        tone: row.tone
    }

    Flow {
        id: list

        anchors.top: words.bottom
        anchors.topMargin: 2 * theme.space
        width: parent.width
        spacing: row.noted ? theme.space : 1.5 * theme.space

        Repeater {
            model: row.options.length

            Item {
                id: option

                required property int index
                readonly property var content: row.options[index] || ({id: "", label: "", note: ""})
                readonly property bool taken: row.current === index

                width: row.noted ? list.width : Math.min(list.width, name.implicitWidth + mark.width + 8 * theme.space)
                height: row.noted ? note.y + note.height + 2 * theme.space : 8 * theme.space

                Accessible.role: Accessible.RadioButton
                Accessible.name: content.label
                Accessible.description: content.note
                Accessible.checkable: true
                Accessible.checked: taken
                Accessible.focusable: true
                Accessible.focused: taken && row.activeFocus
                Accessible.onPressAction: row.pick(index)

                Rectangle {
                    anchors.fill: parent
                    radius: theme.bubbleRadius - theme.space
                    color: option.taken ? theme.chosen : hover.hovered ? theme.track : "transparent"
                    border.color: option.taken && row.activeFocus && view.byKeyboard ? theme.accent : theme.solidHairline
                    border.width: option.taken && row.activeFocus && view.byKeyboard ? theme.focusRing : 1
                }

                Rectangle {
                    id: mark

                    x: 2.5 * theme.space
                    y: 2 * theme.space + (theme.lineBody - height) / 2 - (row.noted ? 0 : 1)
                    width: 3.5 * theme.space
                    height: width
                    radius: width / 2
                    color: "transparent"
                    border.color: option.taken ? theme.accent : theme.textSecondary
                    border.width: option.taken ? 4 : 1
                }

                Label {
                    id: name

                    anchors.left: mark.right
                    anchors.leftMargin: 2 * theme.space
                    anchors.right: parent.right
                    anchors.rightMargin: theme.space
                    y: row.noted ? 2 * theme.space : Math.round((parent.height - height) / 2)
                    text: option.content.label
                    wrapMode: row.noted ? Text.Wrap : Text.NoWrap
                    font.weight: option.taken ? Font.Medium : Font.Normal
                }

                Label {
                    id: note

                    anchors.left: name.left
                    anchors.right: name.right
                    y: name.y + name.height
                    height: text === "" ? 0 : implicitHeight
                    text: option.content.note
                    wrapMode: Text.Wrap
                    font.pixelSize: theme.fontSmall
                    color: theme.textSecondary
                }

                HoverHandler {
                    id: hover
                }

                TapHandler {
                    onTapped: {
                        row.forceActiveFocus(Qt.MouseFocusReason)
                        row.pick(option.index)
                    }
                }
            }
        }
    }
}
