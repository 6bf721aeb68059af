import QtQuick

// A piece of the detail. Its text is rich text made of nothing but what the user may see: it can neither fetch nor
// run anything.
Item {
    id: block

    required property int index
    required property string kind
    required property int level
    required property string marker
    required property string html
    required property bool continues
    required property var sources

    // The keyboard has come to something in it that is to be seen, at a height of the list.
    signal reached(real y, real height)

    readonly property bool isLine: kind === "divider" || kind === "rule"
    readonly property bool isCode: kind === "code"
    readonly property bool hasChips: kind === "sources"
    readonly property bool isQuote: kind === "quote" || kind === "context"
    readonly property bool isQuiet: ["label", "query", "context", "facts", "placeholder", "quote"].includes(kind)
    readonly property bool isSmall: ["label", "facts"].includes(kind)
    readonly property real above: index === 0 ? 0 : continues ? 0
        : { label: 4, query: 1, heading: 4, item: 1.5, sources: 1, facts: 4 }[kind] * theme.space || 3 * theme.space
    readonly property real indent: kind === "item" ? (5 + 4 * level) * theme.space : isQuote ? 3 * theme.space
                                 : isCode ? 3 * theme.space : 0
    readonly property real margin: 4 * theme.space
    property var links: []

    // Whole points: a line of one pixel between two would not be drawn.
    height: Math.ceil(above + (isLine ? 1 : hasChips ? chips.height : words.height + (isCode ? 2 * theme.space : 0)))

    Rectangle {
        x: block.margin
        y: block.above
        width: parent.width - 2 * x
        height: parent.height - y
        visible: block.isLine || block.isCode
        radius: block.isCode ? theme.bubbleRadius - theme.space : 0
        color: block.isCode ? theme.surfaceRaised : theme.solidHairline
    }

    Rectangle {
        x: block.margin
        y: block.above
        width: 2
        height: parent.height - y
        visible: block.isQuote
        color: theme.solidHairline
    }

    Label {
        x: block.margin + block.indent - width - 2 * theme.space
        y: words.y + 1
        visible: block.kind === "item" && !block.continues
        text: block.marker
        color: theme.textSecondary
    }

    TextEdit {
        id: words

        // Whoever wrote the words may have them name another place: where they lead is seen before they are followed.
        function follow(link) {
            const saysSo = block.links.filter(one => one.url === link).every(one => one.words === link)
            if (saysSo || address.isShown) verbs.openLink(link)
            else address.flash()
        }

        x: block.margin + block.indent
        y: block.above + (block.isCode ? theme.space : 0)
        width: parent.width - x - block.margin - (block.isCode ? 2 * theme.space : 0)
        visible: !block.isLine && !block.hasChips
        readOnly: true
        selectByMouse: true
        activeFocusOnPress: true
        textFormat: TextEdit.RichText
        wrapMode: TextEdit.Wrap
        font.family: block.isCode ? "monospace" : theme.textFont
        font.pixelSize: block.isSmall || block.isCode ? theme.fontSmall
                      : block.kind === "heading" && block.level < 3 ? theme.fontTitle : theme.fontBody
        font.weight: block.kind === "heading" || block.kind === "label" ? Font.Medium : Font.Normal
        color: block.kind === "error" ? theme.error : block.isQuiet ? theme.textSecondary : theme.text
        selectionColor: theme.accent
        selectedTextColor: theme.onAccent
        text: block.isLine || block.hasChips ? "" : "<style>a{color:" + theme.accent + ";text-decoration:underline}"
              + "code{font-family:monospace;background-color:" + theme.surfaceRaised + "}</style>"
              + "<p style='white-space:pre-wrap;line-height:" + theme.richLineHeight + "%'>" + block.html + "</p>"
        onTextChanged: block.links = block.html.includes("<a ") ? verbs.linksIn(textDocument) : []
        onLinkActivated: link => follow(link)
        Accessible.role: block.kind === "heading" || block.kind === "label" ? Accessible.Heading : Accessible.Paragraph
        Accessible.name: getText(0, length)
        Accessible.readOnly: true
        Accessible.ignored: block.isLine || block.hasChips

        HoverHandler {
            id: hover
            cursorShape: words.hoveredLink === "" ? Qt.IBeamCursor : Qt.PointingHandCursor
        }

        Item {
            x: hover.point.position.x
            y: hover.point.position.y - height / 2
            width: 1
            height: theme.lineBody

            Hint {
                id: address
                text: words.hoveredLink
                wanted: words.hoveredLink !== ""
            }
        }
    }

    Flow {
        id: chips

        x: block.margin
        y: block.above
        width: parent.width - 2 * x
        visible: block.hasChips
        spacing: 1.5 * theme.space

        Repeater {
            model: block.sources

            SourceChip {
                required property int index
                required property var modelData

                room: chips.width
                title: modelData.title
                address: modelData.address
                numbers: modelData.numbers
                onActivated: verbs.openSource(index)
                onReached: block.reached(block.y + chips.y + y, height)
            }
        }
    }

    Repeater {
        model: block.links

        PanelLink {
            required property var modelData

            passage: words
            target: modelData
            list: block.ListView.view
            onReached: block.reached(block.y + y, height)
        }
    }
}
