import QtQuick
import Dorix.Views

// The bubble beside the icon. Its width comes measured, so that lines break evenly.
Item {
    id: hud

    required property var view

    readonly property var glyphs: ({
        hint: "\uf36c", done: "\uf12c", info: "\uf2fd", error: "\uf5d6", learned: "\uf336"
    })
    readonly property var colors: ({
        hint: theme.accent, done: theme.success, info: theme.textSecondary, error: theme.error,
        learned: theme.learned
    })
    readonly property bool listens: view.look === "listening"
    readonly property bool spins: view.look === "processing"
    readonly property alias bubble: bubble

    Item {
        id: bubble

        readonly property real padding: 3 * theme.space
        readonly property real contentHeight: spins ? theme.lineBody : words.height

        x: view.opensLeft ? view.usable.x + view.usable.width - width : view.usable.x
        // In the middle of its window, which is the icon's, unless the screen ends there.
        y: Math.round(Math.max(view.usable.y, Math.min((hud.height - height) / 2,
                                                       view.usable.y + view.usable.height - height)))
        width: spins ? 2 * padding + theme.glyph
                     : 2 * padding + theme.glyph + 2 * theme.space + view.textWidth
        height: contentHeight + 2 * padding - 2
        opacity: view.shown || !theme.composited ? 1 : 0

        Behavior on opacity {
            NumberAnimation {
                duration: view.shown ? theme.fadeIn : theme.fadeOut
                easing.type: Easing.OutCubic
            }
        }

        Accessible.role: Accessible.AlertMessage
        Accessible.name: view.spoken

        Surface {}

        TurningArc {
            x: bubble.padding
            y: Math.round((bubble.height - height) / 2)
            width: theme.glyph
            height: theme.glyph
            visible: hud.spins
            color: theme.accent

            NumberAnimation on angle {
                running: hud.spins && view.visible && !theme.reducesMotion
                from: 0
                to: 360
                duration: theme.turn
                loops: Animation.Infinite
            }
        }

        Level {
            x: bubble.padding
            y: words.y + Math.round((theme.lineBody - height) / 2)
            visible: hud.listens
            voice: view.level
        }

        Glyph {
            x: bubble.padding
            y: words.y + Math.round((theme.lineBody - height) / 2)
            visible: !hud.listens && !hud.spins
            text: hud.glyphs[view.look] || ""
            color: hud.colors[view.look] || theme.text
        }

        Item {
            id: words

            x: bubble.padding + theme.glyph + 2 * theme.space
            y: bubble.padding - 1
            width: view.textWidth
            height: message.shownHeight + (caption.visible ? caption.height : 0)
            visible: !hud.spins

            // Words that still come show their end: the lines stand on the bottom edge, and what is above the
            // second one is cut off.
            Item {
                width: parent.width
                height: message.shownHeight
                clip: hud.listens

                Text {
                    id: message

                    readonly property real shownHeight: Math.min(lineCount, view.lines) * theme.lineBody

                    width: parent.width
                    y: parent.height - lineCount * theme.lineBody
                    text: view.text
                    textFormat: Text.PlainText
                    wrapMode: Text.Wrap
                    maximumLineCount: hud.listens ? 1000 : view.lines
                    elide: hud.listens ? Text.ElideNone : Text.ElideRight
                    font.family: theme.textFont
                    font.pixelSize: theme.fontBody
                    lineHeight: theme.lineBody
                    lineHeightMode: Text.FixedHeight
                    color: view.placeholder ? theme.textSecondary : theme.text
                    Accessible.ignored: true
                }
            }

            Text {
                id: caption

                y: message.shownHeight
                width: parent.width
                visible: text !== ""
                text: view.caption
                textFormat: Text.PlainText
                elide: Text.ElideRight
                font.family: theme.textFont
                font.pixelSize: theme.fontSmall
                lineHeight: theme.lineSmall
                lineHeightMode: Text.FixedHeight
                color: theme.textSecondary
                Accessible.ignored: true
            }
        }
    }
}
