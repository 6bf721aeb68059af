#pragma once

#include "platform/StatusItem.h"

#include <functional>

namespace dorix {

/// What the menu of the icon can set off.
struct IconVerbs {
    std::function<void()> togglePanel;
    std::function<void()> showAccount;
    std::function<void()> showSettings;
    std::function<void(bool paused)> setPaused;
    std::function<void()> relaunch;
    std::function<void()> terminate;
};

/// The menu of the icon in the app language, as things stand. Main executor.
Menu iconMenu(bool panelOpen, bool paused, const IconVerbs& verbs);

}  // namespace dorix
