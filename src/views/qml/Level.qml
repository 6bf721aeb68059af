import QtQuick
import Dorix.Views

// The voice's level, which with reduced motion shows in the strength of the colour alone.
LevelBars {
    property real voice: 0

    width: theme.glyph
    height: theme.glyph
    color: theme.accent
    level: theme.reducesMotion ? 0.5 : voice
    opacity: theme.reducesMotion ? 0.5 + 0.5 * voice : 1
}
