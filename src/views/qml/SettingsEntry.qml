import QtQuick

// One row of the settings, by its kind.
Item {
    id: entry

    required property var row

    readonly property bool isHeading: row.kind === "heading"
    readonly property var components: ({heading: heading, toggle: toggle, choice: choice, text: field, item: stated})

    height: content.height + (isHeading ? 8 : 6) * theme.space

    Rectangle {
        width: parent.width
        height: 1
        visible: !entry.isHeading && !entry.row.first
        color: theme.solidHairline
    }

    Loader {
        id: content

        y: (entry.isHeading ? 6 : 3) * theme.space
        width: parent.width
        height: implicitHeight
        sourceComponent: entry.components[entry.row.kind]
    }

    Component {
        id: heading

        Label {
            text: entry.row.label
            wrapMode: Text.Wrap
            font.pixelSize: theme.fontTitle
            font.weight: Font.Medium
            Accessible.ignored: false
            Accessible.role: Accessible.Heading
            Accessible.name: text
        }
    }

    Component {
        id: toggle

        SwitchRow {
            label: entry.row.label
            description: entry.row.description
            status: entry.row.status
            tone: entry.row.tone
            on: entry.row.on
            onToggled: on => verbs.toggle(entry.row.id, on)
        }
    }

    Component {
        id: choice

        ChoiceRow {
            label: entry.row.label
            description: entry.row.description
            status: entry.row.status
            tone: entry.row.tone
            options: entry.row.options
            chosen: entry.row.chosen
            onPicked: id => verbs.choose(entry.row.id, id)
        }
    }

    Component {
        id: field

        TextRow {
            label: entry.row.label
            description: entry.row.description
            status: entry.row.status
            tone: entry.row.tone
            text: entry.row.text
            example: entry.row.example
            secret: entry.row.secret
            lines: entry.row.lines
            onEdited: text => verbs.edit(entry.row.id, text)
            onCommitted: text => verbs.commit(entry.row.id, text)
        }
    }

    Component {
        id: stated

        ButtonRow {
            label: entry.row.label
            description: entry.row.description
            status: entry.row.status
            tone: entry.row.tone
            buttons: entry.row.buttons
            progress: entry.row.progress
            level: entry.row.showsLevel ? view.level : -1
            levelName: view.words.level
            quote: entry.row.quote
            lamp: entry.row.lamp
            lit: entry.row.on
            onPressed: id => verbs.press(entry.row.id, id)
        }
    }
}
