#include "linux/atspi/AtspiProtocol.h"

#include <algorithm>
#include <array>
#include <utility>

namespace dorix::atspi {

namespace {

using Row = std::pair<unsigned, std::string_view>;

/// Roles whose name does not hang on a state, in the protocol's order.
constexpr auto rows = std::to_array<Row>({
    {7, "AXCheckBox"},            // check box
    {8, "AXMenuItem"},            // check menu item
    {16, "AXWindow"},             // dialog
    {19, "AXWindow"},             // file chooser
    {23, "AXWindow"},             // frame
    {26, "AXImage"},              // icon
    {27, "AXImage"},              // image
    {29, "AXStaticText"},         // label
    {31, "AXList"},               // list
    {32, "AXGroup"},              // list item
    {33, "AXMenu"},               // menu
    {34, "AXMenuBar"},            // menu bar
    {35, "AXMenuItem"},           // menu item
    {37, "AXRadioButton"},        // page tab
    {38, "AXTabGroup"},           // page tab list
    {40, "AXTextField"},          // password text
    {41, "AXMenu"},               // popup menu
    {42, "AXProgressIndicator"},  // progress bar
    {43, "AXButton"},             // push button
    {44, "AXRadioButton"},        // radio button
    {45, "AXMenuItem"},           // radio menu item
    {48, "AXScrollBar"},          // scroll bar
    {49, "AXScrollArea"},         // scroll pane
    {51, "AXSlider"},             // slider
    {53, "AXSplitGroup"},         // split pane
    {55, "AXTable"},              // table
    {56, "AXCell"},               // table cell
    {60, "AXTextArea"},           // terminal
    {62, "AXCheckBox"},           // toggle button
    {63, "AXToolbar"},            // tool bar
    {65, "AXOutline"},            // tree
    {66, "AXOutline"},            // tree table
    {69, "AXWindow"},             // window
    {75, "AXApplication"},        // application
    {76, "AXTextField"},          // autocomplete
    {77, "AXTextField"},          // editbar
    {82, "AXWebArea"},            // document frame
    {83, "AXHeading"},            // heading
    {88, "AXLink"},               // link
    {90, "AXRow"},                // table row
    {91, "AXRow"},                // tree item
    {95, "AXWebArea"},            // document web
    {98, "AXList"},               // list box
    {116, "AXStaticText"},        // static
    {129, "AXButton"},            // push button menu
});

std::string_view textRole(StateSet states) {
    return has(states, State::multiLine) ? "AXTextArea" : "AXTextField";
}

}  // namespace

std::string_view axRole(Role role, StateSet states) {
    const bool editable = has(states, State::editable);
    switch (role) {
        case Role::entry:
            return has(states, State::readOnly) ? "AXStaticText" : textRole(states);
        case Role::text:
            return editable ? textRole(states) : "AXStaticText";
        case Role::comboBox:
            return editable ? "AXComboBox" : "AXPopUpButton";
        default:
            break;
    }
    const auto row = std::ranges::find(rows, static_cast<unsigned>(role), &Row::first);
    return row == rows.end() ? "AXGroup" : row->second;
}

bool isDocument(Role role) {
    const auto number = static_cast<unsigned>(role);
    constexpr unsigned firstDocument = 92;
    constexpr unsigned lastDocument = 96;
    return role == Role::documentFrame || (number >= firstDocument && number <= lastDocument);
}

}  // namespace dorix::atspi
