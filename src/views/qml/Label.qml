import QtQuick

// A text of the interface: plain, in its font, its lines evenly apart.
Text {
    textFormat: Text.PlainText
    font.family: theme.textFont
    font.pixelSize: theme.fontBody
    lineHeight: Math.round(font.pixelSize * 1.4)
    lineHeightMode: Text.FixedHeight
    color: theme.text
    elide: wrapMode === Text.NoWrap ? Text.ElideRight : Text.ElideNone
    Accessible.ignored: true
}
