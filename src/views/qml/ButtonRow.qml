import QtQuick

// Something with a state and what can be done about it: how far it has come, how loud it is, what was heard, buttons. One
// button stands beside the words, more of them below.
FocusScope {
    id: row

    property string label
    property string description
    property string status
    property string tone: "plain"
    property var buttons: []  // of `id`, `label`, `chief`, `available`
    property real progress: -1  // 0 to 1 while something goes on
    property real level: -1  // 0 to 1 while the microphone listens
    property string levelName
    property string quote
    property string lamp
    property bool lit: false

    readonly property bool beside: buttons.length === 1 && width > 90 * theme.space

    signal pressed(string id)

    readonly property string offered: buttons.map(button => button.id).join()

    function focusFirst() {
        const first = beside ? side : offers.itemAt(0)
        if (first) first.forceActiveFocus(Qt.TabFocusReason)
    }
    // Where other buttons take the place of the one that was pressed, they take the keyboard as well.
    function press(id) {
        const before = offered
        row.pressed(id)
        if (row.offered !== before) Qt.callLater(row.focusFirst)
    }

    implicitHeight: Math.max(content.height, beside ? 8 * theme.space : 0)

    Accessible.role: Accessible.Grouping
    Accessible.name: label
    Accessible.description: description

    Column {
        id: content

        width: parent.width - (row.beside ? side.width + 4 * theme.space : 0)
        anchors.verticalCenter: parent.verticalCenter
        spacing: 2 * theme.space

        FormText {
            width: parent.width
            label: row.label
            description: row.description
            status: row.status
            tone: row.tone
        }

        Lamp {
            visible: row.lamp !== ""
            width: Math.min(parent.width, implicitWidth)
            label: row.lamp
            lit: row.lit
        }

        ProgressBar {
            width: parent.width
            visible: row.progress >= 0
            name: row.label
            fraction: row.progress
        }

        LevelMeter {
            width: parent.width
            visible: row.level >= 0
            name: row.levelName
            level: row.level
        }

        Rectangle {
            width: parent.width
            height: heard.height + 4 * theme.space
            visible: row.quote !== ""
            radius: theme.bubbleRadius - theme.space
            color: theme.surfaceRaised

            Label {
                id: heard

                x: 3 * theme.space
                y: 2 * theme.space
                width: parent.width - 2 * x
                text: row.quote
                wrapMode: Text.Wrap
                Accessible.ignored: false
                Accessible.role: Accessible.StaticText
                Accessible.name: text
            }
        }

        Flow {
            width: parent.width
            visible: !row.beside && row.buttons.length > 0
            spacing: 2 * theme.space

            Repeater {
                id: offers

                model: row.beside ? 0 : row.buttons.length

                PanelButton {
                    required property int index
                    readonly property var offer: row.buttons[index] || ({id: "", label: "", chief: false, available: false})

                    label: offer.label
                    name: row.label === "" ? offer.label : offer.label + ", " + row.label
                    filled: offer.chief
                    available: offer.available
                    onActivated: row.press(offer.id)
                }
            }
        }
    }

    PanelButton {
        id: side

        readonly property var offer: row.buttons[0] || ({id: "", label: "", chief: false, available: false})

        anchors.right: parent.right
        anchors.verticalCenter: parent.verticalCenter
        visible: row.beside
        label: offer.label
        name: row.label === "" ? offer.label : offer.label + ", " + row.label
        filled: offer.chief
        available: offer.available
        onActivated: row.press(offer.id)
    }
}
