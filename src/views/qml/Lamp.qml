import QtQuick

// Lights up while something holds, and says so.
Rectangle {
    id: lamp

    property string label
    property bool lit: false

    implicitWidth: words.implicitWidth + 7 * theme.space
    implicitHeight: 7 * theme.space
    radius: height / 2
    color: lit ? theme.accent : "transparent"
    border.color: lit ? theme.accent : theme.solidHairline

    Accessible.role: Accessible.Indicator
    Accessible.name: label

    Rectangle {
        x: 2.5 * theme.space
        anchors.verticalCenter: parent.verticalCenter
        width: 2 * theme.space
        height: width
        radius: theme.space
        color: lamp.lit ? theme.onAccent : "transparent"
        border.color: lamp.lit ? theme.onAccent : theme.textSecondary
    }

    Label {
        id: words

        x: 5.5 * theme.space
        width: parent.width - x - 1.5 * theme.space
        anchors.verticalCenter: parent.verticalCenter
        text: lamp.label
        font.pixelSize: theme.fontSmall
        color: lamp.lit ? theme.onAccent : theme.textSecondary
    }
}
