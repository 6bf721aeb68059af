import QtQuick

// The first run, step by step.
Item {
    id: onboarding

    required property var view
    required property var verbs

    readonly property real wantedHeight: head.height + pages.contentHeight + foot.height + 20 * theme.space
    readonly property int step: view.step
    readonly property alias success: success
    readonly property bool practises: view.step === 2 && field.activeFocus

    function focusFirst() {
        const item = view.step === 0 ? appLanguage : view.step === 2 ? field : forward
        item.forceActiveFocus(Qt.OtherFocusReason)
    }
    function layOut() {
        page.forceLayout()
        buttons.forceLayout()
    }

    Keys.onPressed: event => scroller.turn(event)

    onPractisesChanged: verbs.setFieldFocused(practises)

    onStepChanged: {
        scroller.toStart()
        Qt.callLater(focusFirst)
    }

    Item {
        id: card

        x: theme.shadowReach
        y: theme.shadowReach
        width: onboarding.width - 2 * theme.shadowReach
        height: onboarding.height - 2 * theme.shadowReach
        Accessible.role: Accessible.Dialog
        Accessible.name: view.words.title

        Surface {
            radius: theme.cardRadius
        }

        MoveArea {}

        PanelButton {
            id: close

            anchors.right: parent.right
            anchors.rightMargin: 2 * theme.space
            y: 2 * theme.space
            glyph: "\uf156"
            ink: theme.textSecondary
            name: view.words.close
            onActivated: onboarding.verbs.closeWindow()
        }

        Column {
            id: head

            x: 6 * theme.space
            y: 6 * theme.space
            width: parent.width - 2 * x - close.width
            spacing: theme.space

            Label {
                width: parent.width
                text: view.place
                font.pixelSize: theme.fontSmall
                color: theme.textSecondary
                Accessible.ignored: false
                Accessible.role: Accessible.StaticText
                Accessible.name: text
            }

            Label {
                width: parent.width
                text: view.heading
                wrapMode: Text.Wrap
                font.pixelSize: theme.fontLarge
                font.weight: Font.Medium
                Accessible.ignored: false
                Accessible.role: Accessible.Heading
                Accessible.name: text
            }
        }

        Flickable {
            id: pages

            anchors.top: head.bottom
            anchors.topMargin: 4 * theme.space
            anchors.bottom: foot.top
            anchors.bottomMargin: 4 * theme.space
            x: 6 * theme.space
            width: parent.width - 2 * x
            contentHeight: page.height + 4
            clip: contentHeight > height
            interactive: false

            Column {
                id: page

                y: 2
                width: parent.width
                spacing: 5 * theme.space

                Label {
                    width: parent.width
                    visible: text !== ""
                    text: view.step === 0 ? view.words.motto : view.step === 1 ? view.permissions
                        : view.step === 2 ? view.practice : view.missing !== "" ? view.missing : view.words.home
                    wrapMode: Text.Wrap
                    color: theme.textSecondary
                    Accessible.ignored: false
                    Accessible.role: Accessible.StaticText
                    Accessible.name: text
                }

                ChoiceRow {
                    id: appLanguage

                    width: parent.width
                    visible: view.step === 0
                    label: view.appLanguage.label
                    options: view.appLanguage.options
                    chosen: view.appLanguage.chosen
                    onPicked: id => onboarding.verbs.chooseAppLanguage(id)
                }

                Repeater {
                    model: view.rows.length

                    ButtonRow {
                        id: need

                        required property int index
                        readonly property var content: view.rows[index]
                            || ({id: "", label: "", description: "", status: "", tone: "plain", progress: -1, buttons: []})

                        width: page.width
                        visible: view.step === 1
                        label: content.label
                        description: content.description
                        status: content.status
                        tone: content.tone
                        progress: content.progress
                        buttons: content.buttons
                        onPressed: id => onboarding.verbs.press(need.content.id, id)
                    }
                }

                ChoiceRow {
                    width: parent.width
                    visible: view.step === 1
                    label: view.language.label
                    options: view.language.options
                    chosen: view.language.chosen
                    onPicked: id => onboarding.verbs.chooseLanguage(id)
                }

                ChoiceRow {
                    width: parent.width
                    visible: view.step === 2 && view.needsHoldKey
                    label: view.holdKey.label
                    status: view.holdKey.status
                    tone: "warning"
                    options: view.holdKey.options
                    chosen: view.holdKey.chosen
                    onPicked: id => onboarding.verbs.chooseHoldKey(id)
                }

                TextRow {
                    id: field

                    width: parent.width
                    visible: view.step === 2
                    label: view.words.field
                    lines: 3
                    onEdited: text => onboarding.verbs.fieldChanged(text)
                }

                Row {
                    id: success

                    visible: view.step === 2 && view.practised
                    spacing: 2 * theme.space
                    Accessible.role: Accessible.AlertMessage
                    Accessible.name: view.words.success

                    Glyph {
                        text: "\uf12c"
                        color: theme.success
                    }

                    Label {
                        width: page.width - theme.glyph - parent.spacing
                        text: view.words.success
                        wrapMode: Text.Wrap
                        color: theme.success
                    }
                }
            }

            Scroller {
                id: scroller
                list: pages
                followsKeyboard: true
            }
        }

        Item {
            id: foot

            x: 6 * theme.space
            anchors.bottom: parent.bottom
            anchors.bottomMargin: 6 * theme.space
            width: parent.width - 2 * x
            height: buttons.height

            Flow {
                id: buttons

                width: parent.width
                spacing: 2 * theme.space
                layoutDirection: Qt.RightToLeft

                PanelButton {
                    id: forward

                    filled: true
                    label: view.step === 3 ? view.end : view.words.next
                    onActivated: onboarding.verbs.next()
                }

                PanelButton {
                    visible: view.step > 0
                    label: view.words.back
                    onActivated: onboarding.verbs.back()
                }
            }
        }
    }
}
