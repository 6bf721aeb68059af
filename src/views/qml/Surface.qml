import QtQuick
import Dorix.Views

// A raised piece of surface; its shadow reaches beyond it.
SoftShape {
    x: -theme.shadowReach
    y: -theme.shadowReach
    width: parent.width + 2 * theme.shadowReach
    height: parent.height + 2 * theme.shadowReach
    surface: theme.surface
    hairline: theme.composited ? theme.hairline : theme.solidHairline
    radius: theme.bubbleRadius
    composited: theme.composited
}
