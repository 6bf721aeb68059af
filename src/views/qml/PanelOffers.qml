import QtQuick

// A button for each verb that a place offers.
Repeater {
    delegate: PanelButton {
        required property string verb
        required property string words
        required property string mark
        required property bool isMarkAlone
        required property bool isMain

        filled: isMain
        label: isMarkAlone ? "" : words
        name: words
        glyph: mark
        ink: isMarkAlone ? theme.textSecondary : filled ? theme.onAccent : theme.text
        onActivated: verbs.perform(verb)
    }
}
