#pragma once

#include <string_view>

namespace dorix {

/// Where in the panel the keyboard is.
enum class PanelArea { search, list, detail, sections, elsewhere };

/// The keys that mean something there; some are combinations, whichever the desktop has for that.
enum class PanelKey {
    up,
    down,
    pageUp,
    pageDown,
    home,
    end,
    left,
    right,
    enter,
    remove,
    menu,
    copy,
    undo,
    find,
};

struct PanelKeyPress {
    enum class With { nothing, shift, command };  // Shift alone; any that makes a command of a key

    PanelKey key;
    With with = With::nothing;
    bool isRepeat = false;  // it is being held
};

/// What a key press asks for: the id of a verb, "" for nothing.
std::string_view verbOf(PanelArea area, const PanelKeyPress& press);

/// Whether holding its key down asks for the verb again and again.
bool repeats(std::string_view verb);

}  // namespace dorix
