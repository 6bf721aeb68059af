import QtQuick

// The account: an address, the code that was sent to it, and whose session it is; or that none is needed.
Item {
    id: account

    required property var view
    required property var verbs

    readonly property real wantedHeight: content.height + 2 * content.y
    readonly property string step: view.step
    readonly property alias complaint: complaint
    readonly property alias notice: notice

    function focusFirst() {
        const item = step === "email" ? email : step === "code" ? code : step === "server" ? server
                   : step === "signedIn" ? signOut : close
        item.forceActiveFocus(Qt.OtherFocusReason)
    }
    function layOut() {
        buttons.forceLayout()
        content.forceLayout()
    }
    function submit() {
        if (view.busy) return
        if (step === "email") verbs.sendCode(email.text)
        else if (step === "code") verbs.verify(code.text)
        else if (step === "server") verbs.useServer(server.text)
    }

    onStepChanged: {
        code.text = ""
        Qt.callLater(focusFirst)
    }

    Item {
        id: card

        x: theme.shadowReach
        y: theme.shadowReach
        width: account.width - 2 * theme.shadowReach
        height: account.height - 2 * theme.shadowReach
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
            onActivated: account.verbs.closeWindow()
        }

        Column {
            id: content

            x: 6 * theme.space
            y: 6 * theme.space
            width: parent.width - 2 * x
            spacing: 4 * theme.space

            Label {
                width: parent.width - close.width
                text: view.heading
                wrapMode: Text.Wrap
                font.pixelSize: theme.fontLarge
                font.weight: Font.Medium
                Accessible.ignored: false
                Accessible.role: Accessible.Heading
                Accessible.name: text
            }

            Label {
                width: parent.width
                visible: text !== ""
                text: view.explanation
                wrapMode: Text.Wrap
                color: theme.textSecondary
                Accessible.ignored: false
                Accessible.role: Accessible.StaticText
                Accessible.name: text
            }

            Field {
                id: email

                width: parent.width
                visible: account.step === "email"
                name: view.words.email
                isWrong: view.error !== ""
                inputMethodHints: Qt.ImhEmailCharactersOnly | Qt.ImhNoAutoUppercase
                onAccepted: account.submit()

                Binding on text {
                    value: view.email
                }
            }

            Field {
                id: code

                width: parent.width
                visible: account.step === "code"
                name: view.words.code
                isWrong: view.error !== ""
                inputMethodHints: Qt.ImhDigitsOnly
                onAccepted: account.submit()
            }

            Field {
                id: server

                width: parent.width
                visible: account.step === "server"
                name: view.words.server
                isWrong: view.error !== ""
                inputMethodHints: Qt.ImhUrlCharactersOnly | Qt.ImhNoAutoUppercase
                onAccepted: account.submit()

                Binding on text {
                    value: view.server
                }
            }

            Label {
                id: complaint

                width: parent.width
                visible: text !== ""
                text: view.error
                wrapMode: Text.Wrap
                color: theme.error
                Accessible.ignored: false
                Accessible.role: Accessible.AlertMessage
                Accessible.name: text
            }

            Label {
                id: notice

                width: parent.width
                visible: text !== ""
                text: view.notice
                wrapMode: Text.Wrap
                color: theme.textSecondary
                Accessible.ignored: false
                Accessible.role: Accessible.AlertMessage
                Accessible.name: text
            }

            Flow {
                id: buttons

                width: parent.width
                spacing: 2 * theme.space

                PanelButton {
                    filled: true
                    visible: ["email", "code", "server"].includes(account.step)
                    available: !view.busy
                    label: view.busy ? view.words.opening
                         : account.step === "email" ? view.words.sendCode
                         : account.step === "code" ? view.words.enter : view.words.useServer
                    onActivated: account.submit()
                }

                PanelButton {
                    id: signOut
                    visible: account.step === "signedIn"
                    available: !view.busy
                    label: view.words.signOut
                    onActivated: account.verbs.signOut()
                }

                PanelButton {
                    visible: account.step === "code"
                    available: !view.busy
                    label: view.words.resend
                    onActivated: account.verbs.resendCode()
                }

                PanelButton {
                    visible: account.step === "code"
                    available: !view.busy
                    label: view.words.changeEmail
                    onActivated: account.verbs.changeEmail()
                }

                PanelButton {
                    visible: ["email", "signedIn", "thisComputer"].includes(account.step)
                    available: !view.busy
                    label: view.words.otherServer
                    onActivated: account.verbs.chooseServer()
                }

                PanelButton {
                    visible: account.step !== "thisComputer" && (view.server !== "" || account.step === "server")
                    available: !view.busy
                    label: view.words.thisComputer
                    onActivated: view.server !== "" ? account.verbs.useThisComputer() : account.verbs.back()
                }
            }
        }
    }
}
