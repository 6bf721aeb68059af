#include "panel/PanelKeys.h"

#include <algorithm>
#include <array>

namespace dorix {

namespace {

using Area = PanelArea;
using Key = PanelKey;
using With = PanelKeyPress::With;

struct Row {
    Area area;
    Key key;
    std::string_view verb;
    With atMost = With::command;
};

// A finished text has its place in the list or in the detail, and both have their keys. The search field
// leaves to the list what means nothing in a line of text.
constexpr std::array rows{
    Row{Area::search, Key::down, "next", With::nothing},
    Row{Area::search, Key::up, "previous", With::nothing},
    Row{Area::search, Key::pageDown, "nextPage", With::nothing},
    Row{Area::search, Key::pageUp, "previousPage", With::nothing},
    Row{Area::search, Key::enter, "insert", With::nothing},
    Row{Area::search, Key::copy, "copy"},

    Row{Area::list, Key::down, "next", With::nothing},
    Row{Area::list, Key::up, "previous", With::nothing},
    Row{Area::list, Key::pageDown, "nextPage", With::nothing},
    Row{Area::list, Key::pageUp, "previousPage", With::nothing},
    Row{Area::list, Key::enter, "insert", With::nothing},
    Row{Area::list, Key::copy, "copy"},
    Row{Area::list, Key::home, "first"},
    Row{Area::list, Key::end, "last"},
    Row{Area::list, Key::remove, "remove"},
    Row{Area::list, Key::right, "openDetail", With::shift},
    Row{Area::list, Key::menu, "showItemMenu"},

    Row{Area::detail, Key::enter, "insert", With::nothing},
    Row{Area::detail, Key::copy, "copy"},
    Row{Area::detail, Key::remove, "remove"},
    Row{Area::detail, Key::left, "back"},

    Row{Area::sections, Key::down, "nextSection"},
    Row{Area::sections, Key::up, "previousSection"},
    Row{Area::sections, Key::home, "firstSection"},
    Row{Area::sections, Key::end, "lastSection"},

    Row{Area::elsewhere, Key::find, "find"},
    Row{Area::elsewhere, Key::undo, "undo"},
};

}  // namespace

std::string_view verbOf(PanelArea area, const PanelKeyPress& press) {
    const auto found = std::ranges::find_if(rows, [&](const Row& row) {
        return row.area == area && row.key == press.key && press.with <= row.atMost;
    });
    return found == rows.end() ? std::string_view() : found->verb;
}

bool repeats(std::string_view verb) { return verb != "insert"; }

}  // namespace dorix
