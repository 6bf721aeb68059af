import QtQuick

// What a row of a form says of its control: what it is, what it is good for, and how it stands.
Column {
    id: words

    property string label
    property string description
    property string status
    property string tone: "plain"  // "good", "warning", "wrong"

    readonly property alias statusItem: state

    spacing: theme.space / 2

    Label {
        width: parent.width
        visible: text !== ""
        text: words.label
        wrapMode: Text.Wrap
    }

    Label {
        width: parent.width
        visible: text !== ""
        text: words.description
        wrapMode: Text.Wrap
        font.pixelSize: theme.fontSmall
        color: theme.textSecondary
    }

    Row {
        width: parent.width
        visible: words.status !== ""
        topPadding: theme.space / 2
        spacing: 1.5 * theme.space

        Glyph {
            y: 0
            visible: words.tone !== "plain"
            text: words.tone === "good" ? "\uf12c" : words.tone === "warning" ? "\uf2fd" : "\uf5d6"
            color: words.tone === "good" ? theme.success : words.tone === "wrong" ? theme.error : theme.textSecondary
        }

        Label {
            id: state

            width: parent.width - (words.tone === "plain" ? 0 : theme.glyph + parent.spacing)
            text: words.status
            wrapMode: Text.Wrap
            font.pixelSize: theme.fontSmall
            color: words.tone === "wrong" ? theme.error : theme.textSecondary
            Accessible.ignored: false
            Accessible.role: words.tone === "wrong" ? Accessible.AlertMessage : Accessible.StaticText
            Accessible.name: text
        }
    }
}
