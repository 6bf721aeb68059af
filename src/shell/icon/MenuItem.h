#pragma once

#include <functional>
#include <string>
#include <vector>

namespace dorix {

/// A row of the icon's menu, its label in the app language.
struct MenuItem {
    std::string label;
    bool separator = false;
    bool enabled = true;
    std::function<void()> handler = [] {};
};

/// Builds the menu anew at each opening.
using MenuProvider = std::function<std::vector<MenuItem>()>;

}  // namespace dorix
