import QtQuick

// A glyph of the icon font, in a square of its own.
Text {
    width: theme.glyph
    height: theme.glyph
    font.family: theme.glyphFont
    font.pixelSize: theme.glyph
    horizontalAlignment: Text.AlignHCenter
    verticalAlignment: Text.AlignVCenter
    Accessible.ignored: true
}
