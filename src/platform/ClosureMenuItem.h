#pragma once

#include <functional>
#include <string>
#include <vector>

namespace dorix {

/// An entry of a menu: what it reads, and what choosing it does. Without a label it is a line between groups.
struct ClosureMenuItem {
    std::string label;
    std::function<void()> handler;

    static ClosureMenuItem separator() { return {}; }
    bool isSeparator() const { return label.empty(); }
};

/// A menu from top to bottom. Menus are built anew at each opening, so that they say how things stand.
using Menu = std::vector<ClosureMenuItem>;
using MenuBuilder = std::function<Menu()>;

}  // namespace dorix
