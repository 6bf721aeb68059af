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

/// The program's entry among the desktop's status icons, where the desktop has such a place. Main executor;
/// nothing blocks.
class StatusItem {
 public:
    virtual ~StatusItem() = default;

    /// Puts it there, also when the place comes up later. `clicked` is a click, `menu` what a right click
    /// opens.
    virtual void show(std::function<void()> clicked, MenuBuilder menu) = 0;

    /// What is read when the pointer rests on it.
    virtual void setToolTip(const std::string& text) = 0;
};

}  // namespace dorix
