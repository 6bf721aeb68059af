#include "linux/atspi/FocusTracker.h"

namespace dorix {

void FocusTracker::focusGained(const ObjectRef& object) {
    auto& app = apps_[object.bus];
    app.focus = object.path;
    app.tellsOfFocus = true;
    app.focusMayBeBehind = false;
    std::erase_if(places_, [&](const ObjectRef& place) { return place.bus == object.bus; });
    places_.push_back(object);
}

void FocusTracker::focusLost(const ObjectRef& object) {
    auto& app = apps_[object.bus];
    // Toolkits tell of the new focus before or after the old one.
    if (app.focus == object.path) app.focus.reset();
    app.tellsOfFocus = true;
    std::erase(places_, object);
}

void FocusTracker::windowActivated(const ObjectRef& window) {
    auto& app = apps_[window.bus];
    if (app.activeWindow && app.activeWindow != window.path) app.focusMayBeBehind = true;
    app.activeWindow = window.path;
}

void FocusTracker::windowDeactivated(const ObjectRef& window) {
    auto& app = apps_[window.bus];
    // Kept: the window that comes next is compared with it, and its state is asked for before it is believed.
    if (!app.activeWindow) app.activeWindow = window.path;
}

void FocusTracker::gone(const std::string& bus) {
    apps_.erase(bus);
    std::erase_if(places_, [&](const ObjectRef& place) { return place.bus == bus; });
}

const FocusTracker::App* FocusTracker::find(const std::string& bus) const {
    const auto found = apps_.find(bus);
    return found == apps_.end() ? nullptr : &found->second;
}

}  // namespace dorix
