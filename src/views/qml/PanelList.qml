import QtQuick

// The items, under the names of their days. The name of the day that is at the top stays there.
FocusScope {
    id: list

    signal key(var event)
    signal typed(string text)
    signal opened(point at)  // an item, by a click at that point of the window

    readonly property int rowsPerPage: Math.max(1, Math.floor(rows.height / theme.panelRow) - 1)
    readonly property alias count: rows.count

    onRowsPerPageChanged: verbs.setRowsPerPage(rowsPerPage)

    function reveal() {
        if (view.selected < 0) return
        rows.positionViewAtIndex(view.selected, ListView.Contain)
        // The day's name at the top would cover it.
        const item = rows.itemAtIndex(view.selected)
        if (item && item.y < rows.contentY + theme.panelDay) scroller.to(item.y - theme.panelDay)
    }

    function tell() {
        verbs.tellFocus(rows.itemAtIndex(view.selected))
    }

    function showMenu() {
        const row = view.selected < 0 ? null : rows.itemAtIndex(view.selected)
        if (!row) return
        const corner = row.mapToItem(null, 0, row.height)
        verbs.showRowMenu(view.selected, corner.x + 40, corner.y)
    }

    ListView {
        id: rows

        anchors.fill: parent
        model: view.rows
        focus: true
        activeFocusOnTab: true
        interactive: false
        reuseItems: true
        cacheBuffer: 4 * theme.panelRow
        bottomMargin: footLabel.visible ? footLabel.height + 4 * theme.space : theme.space
        keyNavigationEnabled: false
        currentIndex: -1
        onActiveFocusChanged: if (activeFocus) Qt.callLater(list.tell)
        Accessible.role: Accessible.List
        Accessible.name: view.words.list
        Accessible.focusable: true

        Keys.onPressed: event => {
            event.accepted = false
            list.key(event)
            if (event.accepted) return
            const plain = !(event.modifiers & (Qt.ControlModifier | Qt.AltModifier | Qt.MetaModifier))
            event.accepted = true
            if (event.key >= Qt.Key_Dead_Grave && event.key <= Qt.Key_Dead_Longsolidusoverlay) {
                // The accent is lost, but a search does not need it.
                list.typed("")
            } else if (plain && event.text.trim() !== "" && event.text >= " " && event.text !== "\u007f") {
                list.typed(event.text)
            } else {
                event.accepted = false
            }
        }

        delegate: PanelRow {
            width: ListView.view.width
            focused: rows.activeFocus
            onOpened: at => list.opened(at)
        }

        readonly property int selected: view.selected

        onSelectedChanged: list.reveal()

        Rectangle {
            id: sticky

            readonly property int first: rows.count === 0 ? -1 : rows.indexAt(8, rows.contentY + 1)
            readonly property int next: rows.count === 0 ? -1 : rows.indexAt(8, rows.contentY + theme.panelDay)
            readonly property Item pushing: next > first && view.rows.isDayAt(next) ? rows.itemAtIndex(next) : null

            parent: list
            width: list.width
            height: theme.panelDay
            y: pushing ? Math.min(0, pushing.y - rows.contentY - height) : 0
            visible: first >= 0 && rows.contentY > rows.originY
            color: theme.surface

            Label {
                x: 4 * theme.space
                width: parent.width - 2 * x
                height: parent.height
                verticalAlignment: Text.AlignVCenter
                text: sticky.visible ? view.rows.dayAt(sticky.first) : ""
                font.pixelSize: theme.fontSmall
                font.weight: Font.Medium
                color: theme.textSecondary
            }
        }

        BalancedLabel {
            id: footLabel

            // At the end of the list, or at the bottom of a list that is short.
            parent: rows.contentItem
            x: Math.round((list.width - width) / 2)
            room: list.width - 8 * theme.space
            y: Math.max(rows.originY + rows.contentHeight + 2 * theme.space, rows.contentY + rows.height - height - 3 * theme.space)
            visible: rows.count > 0
            text: view.words.foot
            font.pixelSize: theme.fontSmall
            color: theme.textSecondary
            Accessible.ignored: false
            Accessible.role: Accessible.StaticText
            Accessible.name: text
        }

        Scroller {
            id: scroller
            list: rows
        }
    }

    Column {
        id: empty

        anchors.centerIn: parent
        width: Math.min(parent.width - 8 * theme.space, 80 * theme.space)
        spacing: 2 * theme.space
        visible: rows.count === 0
        Accessible.ignored: !visible
        Accessible.role: Accessible.StaticText
        Accessible.name: view.emptyText

        Glyph {
            anchors.horizontalCenter: parent.horizontalCenter
            width: 2 * theme.glyphLarge
            height: width
            font.pixelSize: 1.5 * theme.glyphLarge
            text: view.query !== "" ? "\uf349" : view.sections[view.section].glyph
            color: theme.textSecondary
            opacity: 0.6
        }

        // What is so, and what can be done about it.
        Repeater {
            model: view.emptyText.split("\n")

            BalancedLabel {
                required property int index
                required property string modelData

                anchors.horizontalCenter: parent.horizontalCenter
                room: empty.width
                text: modelData
                font.weight: index === 0 ? Font.Medium : Font.Normal
                color: index === 0 ? theme.text : theme.textSecondary
            }
        }
    }
}
