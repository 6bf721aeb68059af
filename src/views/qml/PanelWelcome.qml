import QtQuick

// How to begin, while nothing is selected.
Flickable {
    id: welcome

    contentHeight: content.height + 4 * theme.space
    interactive: false
    clip: true
    activeFocusOnTab: true
    Accessible.role: Accessible.Document
    Accessible.name: view.welcome.title
    Accessible.description: [...view.welcome.steps, view.welcome.aside, view.welcome.sample].filter(text => text !== "").join("\n")
    Accessible.focusable: true

    Keys.onPressed: event => {
        event.accepted = true
        if (event.key === Qt.Key_Down) scroller.by(3 * theme.lineBody)
        else if (event.key === Qt.Key_Up) scroller.by(-3 * theme.lineBody)
        else event.accepted = false
    }

    Column {
        id: content

        x: 4 * theme.space
        width: parent.width - 2 * x
        spacing: 4 * theme.space

        Label {
            width: parent.width
            text: view.welcome.title
            wrapMode: Text.Wrap
            font.pixelSize: theme.fontLarge
            font.weight: Font.Medium
            Accessible.ignored: false
            Accessible.role: Accessible.Heading
            Accessible.name: text
        }

        Repeater {
            model: view.welcome.steps

            Item {
                id: step

                required property int index
                required property string modelData

                width: content.width
                height: words.height

                Rectangle {
                    width: theme.lineBody + 2
                    height: width
                    radius: width / 2
                    color: theme.chosen

                    Label {
                        anchors.centerIn: parent
                        text: step.index + 1
                        font.pixelSize: theme.fontSmall
                        font.weight: Font.Medium
                        color: theme.accent
                    }
                }

                Label {
                    id: words
                    x: 8 * theme.space
                    y: 1
                    width: parent.width - x
                    wrapMode: Text.Wrap
                    text: step.modelData
                    Accessible.ignored: false
                    Accessible.role: Accessible.StaticText
                    Accessible.name: text
                }
            }
        }

        Label {
            width: parent.width
            visible: text !== ""
            wrapMode: Text.Wrap
            text: view.welcome.aside
            color: theme.textSecondary
            Accessible.ignored: false
            Accessible.role: Accessible.StaticText
            Accessible.name: text
        }

        Rectangle {
            width: parent.width
            height: sample.height + 6 * theme.space
            radius: theme.bubbleRadius
            color: theme.surfaceRaised

            Label {
                id: sample
                x: 3 * theme.space
                y: 3 * theme.space
                width: parent.width - 2 * x
                wrapMode: Text.Wrap
                text: view.welcome.sample
                Accessible.ignored: false
                Accessible.role: Accessible.StaticText
                Accessible.name: text
            }
        }
    }

    Scroller {
        id: scroller
        list: welcome
    }
}
